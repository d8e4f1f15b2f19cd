// three.js loads every glTF file orvasf writes from the shared ASF/AMC pairs and BVH files (.glb
// and .gltf), plays its animation and must put every joint, at every tenth frame and the last,
// where `orvasf pose` puts it (ASF/AMC) or where three.js's own BVH loader puts it (BVH): within
// 1e-5 m.
// Usage: node three_pose.mjs ORVASF SOURCE_DIR SHARED_DATA_DIR
import path from 'node:path';
import { bvhFiles, convert, finish, motionPairs, posePositions, requireModules, setup } from './common.mjs';

const context = setup();
requireModules(context.source);
const { amcFrameCount, bvhPositions, framesOf, gltfPositions, largestDifference } = await import('./three_support.mjs');

const kTolerance = 1e-3; // centimetres: 1e-5 m

const sources = [
  ...motionPairs(context.source).map((p) => ({ ...p, name: p.amc })),
  ...bvhFiles(context.data).map((bvh) => ({ bvh, name: path.basename(bvh, '.bvh') })),
];
let passed = 0, failed = 0, overall = 0;
for (const source of sources) {
  // The source's positions in centimetres, at the frames to check.
  let expected, frames, framesPerSecond = 120;
  if (source.bvh) {
    const bvh = path.join(context.data, 'bvh', source.bvh);
    frames = framesOf(bvhPositions(bvh, [0]).frameCount);
    ({ rows: expected, framesPerSecond } = bvhPositions(bvh, frames));
  } else {
    const amc = path.join(context.data, 'amc', `${source.amc}.amc`);
    frames = framesOf(amcFrameCount(amc));
    expected = posePositions(context.tool, path.join(context.data, 'asf', `${source.asf}.asf`), amc, frames);
  }
  for (const suffix of ['.glb', '.gltf']) {
    const file = path.join(context.work, source.name + suffix);
    convert(context, source, file);
    try {
      // glTF is in metres.
      const actual = await gltfPositions(file, frames, framesPerSecond);
      if (actual.size !== expected.size) throw new Error(`${actual.size} joint positions for the source's ${expected.size}`);
      const largest = largestDifference(expected, actual, 100);
      const ok = largest <= kTolerance;
      ok ? ++passed : ++failed;
      overall = Math.max(overall, largest);
      console.log(`${ok ? 'ok  ' : 'FAIL'} ${path.basename(file)}: ${actual.size} joint positions, largest difference ` +
                  `${(largest / 100).toExponential(2)} m`);
    } catch (error) {
      ++failed;
      console.log(`FAIL ${path.basename(file)}: ${error.message}`);
    }
  }
}
console.log(`three.js against the sources: largest difference ${(overall / 100).toExponential(2)} m`);
finish(passed, failed);
