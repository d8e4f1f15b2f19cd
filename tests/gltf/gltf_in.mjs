// glTF in: files written by orvasf itself, by assimp (from the shared BVH files) and by three.js's
// GLTFExporter (from orvasf's files) are converted by orvasf to BVH, which three.js's BVH loader
// poses: every joint of the source must be at the source's world position, within 1e-3 cm, at
// every frame. Bad glTF files must be refused with "FILE: error:" messages and exit status 1.
// Usage: node gltf_in.mjs ORVASF SOURCE_DIR SHARED_DATA_DIR
import { execFileSync, spawnSync } from 'node:child_process';
import fs from 'node:fs';
import path from 'node:path';
import { bvhFiles, convert, finish, motionPairs, orvasf, posePositions, requireModules, setup } from './common.mjs';

const context = setup();
requireModules(context.source);
const { amcFrameCount, bvhPositions, exportGlb, framesOf, parseGltf, threeName } = await import('./three_support.mjs');

const kTolerance = 1e-3; // centimetres
let passed = 0, failed = 0;
const largest = { orvasf: 0, assimp: 0, three: 0 };

// Every frame's joint positions of the source, in centimetres.
function sourcePositions(pSource) {
  if (pSource.bvh) return bvhPositions(path.join(context.data, 'bvh', pSource.bvh)).rows;
  const amc = path.join(context.data, 'amc', `${pSource.amc}.amc`);
  return posePositions(context.tool, path.join(context.data, 'asf', `${pSource.asf}.asf`), amc,
                       framesOf(amcFrameCount(amc), 1));
}

// Converts pGltf to BVH with orvasf and compares its joints with pExpected. What the writer does
// differently: scale turns the BVH's numbers into the source's unit, shift is added to them, and
// rename gives a source joint's name in the written file.
function check(pWriter, pGltf, pExpected, { scale = 1, shift = [0, 0, 0], rename = (pName) => pName } = {}) {
  const bvh = `${pGltf}.bvh`;
  try {
    orvasf(context.tool, ['convert', pGltf, '-o', bvh]);
    let difference = 0;
    const actual = bvhPositions(bvh).rows;
    for (const [key, expected] of pExpected) {
      const [frame, name] = [key.slice(0, key.indexOf(' ')), key.slice(key.indexOf(' ') + 1)];
      const position = actual.get(`${frame} ${name}`) ?? actual.get(`${frame} ${rename(name)}`);
      if (!position) throw new Error(`no joint position for frame and joint ${key}`);
      difference = Math.max(difference, Math.hypot(...position.map((v, a) => v * scale + shift[a] - expected[a])));
    }
    const ok = difference <= kTolerance;
    ok ? ++passed : ++failed;
    largest[pWriter] = Math.max(largest[pWriter], difference);
    console.log(`${ok ? 'ok  ' : 'FAIL'} ${pWriter} ${path.basename(pGltf)}: ${pExpected.size} joint positions, ` +
                `largest difference ${difference.toExponential(2)} cm`);
  } catch (error) {
    ++failed;
    console.log(`FAIL ${pWriter} ${path.basename(pGltf)}: ${error.message.split('\n')[0]}`);
  }
}

const sources = [
  ...motionPairs(context.source).map((p) => ({ ...p, name: p.amc })),
  ...bvhFiles(context.data).map((bvh) => ({ bvh, name: path.basename(bvh, '.bvh') })),
];
for (const [index, source] of sources.entries()) {
  const expected = sourcePositions(source);
  const own = path.join(context.work, `${source.name}.glb`);
  convert(context, source, own);
  check('orvasf', own, expected);
  // A few files also as .gltf with a separate buffer, and through three.js's exporter.
  if (index % 4 === 0) {
    const separate = path.join(context.work, `${source.name}-separate.gltf`);
    convert(context, source, separate, ['--buffer', 'separate']);
    check('orvasf', separate, expected);
    const exported = path.join(context.work, `${source.name}-three.glb`);
    await exportGlb(await parseGltf(own), exported);
    check('three', exported, expected, { rename: threeName });
  }
  if (source.bvh) {
    // assimp keeps the BVH file's numbers as glTF metres, which orvasf reads as 100 times the
    // centimetres, names an End Site "EndSite_" and its joint's name, and takes the root's
    // position channels as its whole position, leaving out the root's OFFSET.
    const exported = path.join(context.work, `${source.name}-assimp.gltf`);
    execFileSync('assimp', ['export', path.join(context.data, 'bvh', source.bvh), exported, '-fgltf2'], { stdio: 'ignore' });
    const bvh = fs.readFileSync(path.join(context.data, 'bvh', source.bvh), 'latin1');
    const rootOffset = /ROOT[^{]*\{\s*OFFSET\s+(\S+)\s+(\S+)\s+(\S+)/i.exec(bvh).slice(1).map(Number);
    check('assimp', exported, expected,
          { scale: 0.01, shift: rootOffset, rename: (pName) => pName.replace(/^(.*)_End$/, 'EndSite_$1') });
  }
}

// Bad files: each must be refused with a message naming it and exit status 1.
const glb = fs.readFileSync(path.join(context.work, `${sources[0].name}.glb`));
const jsonSize = glb.readUInt32LE(12);
const json = JSON.parse(glb.subarray(20, 20 + jsonSize).toString('utf8'));
const bin = glb.subarray(28 + jsonSize);
const withJson = (pEdit) => { const copy = structuredClone(json); pEdit(copy); return copy; };
// A binary glTF file of pJson and pBin, with consistent chunk and file lengths.
const makeGlb = (pJson, pBin) => {
  const raw = Buffer.from(JSON.stringify(pJson));
  const text = Buffer.concat([raw, Buffer.alloc((4 - (raw.length % 4)) % 4, 0x20)]);
  const data = Buffer.concat([pBin, Buffer.alloc((4 - (pBin.length % 4)) % 4)]);
  const words = (...pValues) => Buffer.from(new Uint32Array(pValues).buffer);
  return Buffer.concat([Buffer.from('glTF'), words(2, 28 + text.length + data.length), words(text.length),
                        Buffer.from('JSON'), text, words(data.length), Buffer.from('BIN\0'), data]);
};
const half = bin.subarray(0, bin.length / 2);
const badFiles = {
  'not-gltf.gltf': 'HIERARCHY\nROOT Hips\n',
  'truncated.glb': glb.subarray(0, glb.length / 2),
  'bad-accessor.glb': makeGlb(withJson((j) => { j.animations[0].samplers[0].output = 9999; }), bin),
  'short-buffer.glb': makeGlb(withJson((j) => { j.buffers[0].byteLength = half.length; }), half),
  'no-skin.glb': makeGlb(withJson((j) => { delete j.skins; delete j.scenes; delete j.scene; }), bin),
};
for (const [name, bytes] of Object.entries(badFiles)) {
  const file = path.join(context.work, name);
  fs.writeFileSync(file, bytes);
  const run = spawnSync(context.tool, ['convert', file, '-o', `${file}.bvh`], { encoding: 'utf8' });
  const ok = run.status === 1 && run.stderr.includes(`${file}: error: `) && !fs.existsSync(`${file}.bvh`);
  ok ? ++passed : ++failed;
  console.log(`${ok ? 'ok  ' : 'FAIL'} refused ${name}: status ${run.status}, ${run.stderr.trim().split('\n')[0]}`);
}
console.log(`largest differences: orvasf ${largest.orvasf.toExponential(2)} cm, assimp ${largest.assimp.toExponential(2)} cm, ` +
            `three.js ${largest.three.toExponential(2)} cm`);
finish(passed, failed);
