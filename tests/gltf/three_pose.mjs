// three.js loads every glTF file orvasf writes from the shared ASF/AMC pairs and BVH files (.glb
// and .gltf), plays its animation and must put every joint, at every tenth frame and the last,
// where `orvasf pose` puts it (ASF/AMC) or where three.js's own BVH loader puts it (BVH): within
// 1e-5 m.
// Usage: node three_pose.mjs ORVASF SOURCE_DIR SHARED_DATA_DIR
import fs from 'node:fs';
import path from 'node:path';
import { bvhFiles, convert, finish, motionPairs, posePositions, requireModules, setup } from './common.mjs';

const context = setup();
requireModules(context.source);
// GLTFLoader reports progress with ProgressEvent, which node lacks.
globalThis.ProgressEvent ??= class ProgressEvent {};
const THREE = await import('three');
const { GLTFLoader } = await import('three/examples/jsm/loaders/GLTFLoader.js');
const { BVHLoader } = await import('three/examples/jsm/loaders/BVHLoader.js');

const kTolerance = 1e-5; // metres

function parse(pFile) {
  const bytes = fs.readFileSync(pFile);
  const data = pFile.endsWith('.glb') ? bytes.buffer.slice(bytes.byteOffset, bytes.byteOffset + bytes.length)
                                      : bytes.toString('utf8');
  return new Promise((resolve, reject) => new GLTFLoader().parse(data, path.dirname(pFile) + '/', resolve, reject));
}

// Every tenth frame of pCount, and the last.
function framesOf(pCount) {
  const frames = [];
  for (let f = 0; f < pCount; f += 10) frames.push(f);
  if (frames[frames.length - 1] !== pCount - 1) frames.push(pCount - 1);
  return frames;
}

// The largest distance, in metres, between three.js's joint positions in pFile and pExpected (cm).
async function largestDifference(pFile, pExpected, pFrames, pFramesPerSecond) {
  const gltf = await parse(pFile);
  const mixer = new THREE.AnimationMixer(gltf.scene);
  if (gltf.animations.length > 0) {
    const action = mixer.clipAction(gltf.animations[0]);
    action.setLoop(THREE.LoopOnce);
    action.clampWhenFinished = true;
    action.play();
  }
  // Joints by their names in the file: three.js makes names unique and strips some characters.
  const joints = [];
  gltf.scene.traverse((object) => {
    const association = gltf.parser.associations.get(object);
    if (association?.nodes !== undefined && object.isBone) joints.push([gltf.parser.json.nodes[association.nodes].name, object]);
  });
  let largest = 0, compared = 0;
  const position = new THREE.Vector3();
  for (const frame of pFrames) {
    // The frame's time as the file holds it: glTF keyframe times are 32-bit floats.
    mixer.setTime(Math.fround(frame / pFramesPerSecond));
    gltf.scene.updateMatrixWorld(true);
    for (const [name, joint] of joints) {
      const expected = pExpected.get(`${frame} ${name}`);
      if (!expected) throw new Error(`${path.basename(pFile)}: the source has no joint ${name} at frame ${frame}`);
      joint.getWorldPosition(position);
      largest = Math.max(largest, Math.hypot(position.x - expected[0] / 100, position.y - expected[1] / 100,
                                             position.z - expected[2] / 100));
      ++compared;
    }
  }
  if (compared === 0) throw new Error(`${path.basename(pFile)}: no joint compared`);
  return { largest, compared };
}

// World positions (centimetres) of every joint of a BVH file at pFrames, by three.js's BVH loader,
// as a Map "frame joint" -> [x, y, z]; an End Site counts as its joint's name with "_End".
function bvhPositions(pFile, pFrames) {
  const { skeleton, clip } = new BVHLoader().parse(fs.readFileSync(pFile, 'latin1'));
  // Track names cannot hold some characters of joint names (such as ':'): bind through clean names.
  const names = new Map();
  for (const bone of skeleton.bones) {
    const clean = THREE.PropertyBinding.sanitizeNodeName(bone.name) + '_' + names.size;
    names.set(clean, bone.name);
    bone.name = clean;
  }
  const original = [...names.entries()];
  for (const track of clip.tracks) {
    const dot = track.name.lastIndexOf('.');
    const [clean] = original.find(([, name]) => name === track.name.slice(0, dot));
    track.name = clean + track.name.slice(dot);
  }
  const root = new THREE.Group();
  root.add(skeleton.bones[0]);
  const mixer = new THREE.AnimationMixer(root);
  const action = mixer.clipAction(clip);
  action.setLoop(THREE.LoopOnce);
  action.clampWhenFinished = true;
  action.play();
  const frameTime = clip.duration / (clip.tracks[0].times.length - 1);
  const rows = new Map();
  const position = new THREE.Vector3();
  for (const frame of pFrames) {
    mixer.setTime(Math.fround(frame * frameTime));
    root.updateMatrixWorld(true);
    for (const bone of skeleton.bones) {
      const name = names.get(bone.name) === 'ENDSITE' ? names.get(bone.parent.name) + '_End' : names.get(bone.name);
      bone.getWorldPosition(position);
      rows.set(`${frame} ${name}`, position.toArray());
    }
  }
  return { rows, framesPerSecond: 1 / frameTime, frameCount: clip.tracks[0].times.length };
}

function frameCount(pAmc) {
  return fs.readFileSync(pAmc, 'latin1').split(/\r?\n/).filter((l) => /^\s*\d+\s*$/.test(l)).length;
}

const sources = [
  ...motionPairs(context.source).map((p) => ({ ...p, name: p.amc })),
  ...bvhFiles(context.data).map((bvh) => ({ bvh, name: path.basename(bvh, '.bvh') })),
];
let passed = 0, failed = 0, overall = 0;
for (const source of sources) {
  let expected, frames, framesPerSecond;
  if (source.bvh) {
    const probe = bvhPositions(path.join(context.data, 'bvh', source.bvh), [0]);
    frames = framesOf(probe.frameCount);
    ({ rows: expected, framesPerSecond } = bvhPositions(path.join(context.data, 'bvh', source.bvh), frames));
  } else {
    const amc = path.join(context.data, 'amc', `${source.amc}.amc`);
    frames = framesOf(frameCount(amc));
    expected = posePositions(context.tool, path.join(context.data, 'asf', `${source.asf}.asf`), amc, frames);
    framesPerSecond = 120;
  }
  for (const suffix of ['.glb', '.gltf']) {
    const file = path.join(context.work, source.name + suffix);
    convert(context, source, file);
    try {
      const { largest, compared } = await largestDifference(file, expected, frames, framesPerSecond);
      const ok = largest <= kTolerance;
      ok ? ++passed : ++failed;
      overall = Math.max(overall, largest);
      console.log(`${ok ? 'ok  ' : 'FAIL'} ${path.basename(file)}: ${compared} joint positions, largest difference ` +
                  `${largest.toExponential(2)} m`);
    } catch (error) {
      ++failed;
      console.log(`FAIL ${path.basename(file)}: ${error.message}`);
    }
  }
}
console.log(`three.js against the sources: largest difference ${overall.toExponential(2)} m`);
finish(passed, failed);
