// three.js as the checks use it in node: loading and exporting glTF, posing BVH files, and
// comparing joint positions. Imported only once node_modules is known to be there.
import fs from 'node:fs';
import path from 'node:path';

// GLTFLoader reports progress with ProgressEvent and GLTFExporter reads its output through
// FileReader; node has neither.
globalThis.ProgressEvent ??= class ProgressEvent {};
globalThis.FileReader ??= class FileReader {
  readAsArrayBuffer(pBlob) {
    pBlob.arrayBuffer().then((pBytes) => { this.result = pBytes; this.onloadend?.(); });
  }
  readAsDataURL(pBlob) {
    pBlob.arrayBuffer().then((pBytes) => {
      this.result = `data:${pBlob.type || 'application/octet-stream'};base64,${Buffer.from(pBytes).toString('base64')}`;
      this.onloadend?.();
    });
  }
};
const THREE = await import('three');
const { GLTFLoader } = await import('three/examples/jsm/loaders/GLTFLoader.js');
const { GLTFExporter } = await import('three/examples/jsm/exporters/GLTFExporter.js');
const { BVHLoader } = await import('three/examples/jsm/loaders/BVHLoader.js');

export function parseGltf(pFile) {
  const bytes = fs.readFileSync(pFile);
  const data = pFile.endsWith('.glb') ? bytes.buffer.slice(bytes.byteOffset, bytes.byteOffset + bytes.length)
                                      : bytes.toString('utf8');
  return new Promise((resolve, reject) => new GLTFLoader().parse(data, path.dirname(pFile) + '/', resolve, reject));
}

// Writes pGltf's scene and animations as a .glb file with three.js's exporter.
export async function exportGlb(pGltf, pFile) {
  const glb = await new GLTFExporter().parseAsync(pGltf.scene, { binary: true, animations: pGltf.animations });
  fs.writeFileSync(pFile, Buffer.from(glb));
}

// Every tenth frame of pCount and the last, or with pEvery 1 every frame.
export function framesOf(pCount, pEvery = 10) {
  const frames = [];
  for (let f = 0; f < pCount; f += pEvery) frames.push(f);
  if (frames[frames.length - 1] !== pCount - 1) frames.push(pCount - 1);
  return frames;
}

// The frames of an AMC file: its lines holding a frame number alone.
export function amcFrameCount(pAmc) {
  return fs.readFileSync(pAmc, 'latin1').split(/\r?\n/).filter((l) => /^\s*\d+\s*$/.test(l)).length;
}

// Plays pClip on pRoot once, holding the last frame, and returns a function posing pRoot at a time.
function player(pRoot, pClip) {
  const mixer = new THREE.AnimationMixer(pRoot);
  if (pClip) {
    const action = mixer.clipAction(pClip);
    action.setLoop(THREE.LoopOnce);
    action.clampWhenFinished = true;
    action.play();
  }
  return (pSeconds) => {
    // Keyframe times are 32-bit floats in three.js and in glTF files alike.
    mixer.setTime(Math.fround(pSeconds));
    pRoot.updateMatrixWorld(true);
  };
}

// World positions of every joint of a glTF file at pFrames, in the file's unit, as a Map
// "frame joint" -> [x, y, z]; joints are named as in the file (three.js alters some names).
export async function gltfPositions(pFile, pFrames, pFramesPerSecond) {
  const gltf = await parseGltf(pFile);
  const joints = [];
  gltf.scene.traverse((object) => {
    const association = gltf.parser.associations.get(object);
    if (association?.nodes !== undefined && object.isBone)
      joints.push([gltf.parser.json.nodes[association.nodes].name, object]);
  });
  const pose = player(gltf.scene, gltf.animations[0]);
  const rows = new Map();
  for (const frame of pFrames) {
    pose(frame / pFramesPerSecond);
    for (const [name, joint] of joints) rows.set(`${frame} ${name}`, joint.getWorldPosition(new THREE.Vector3()).toArray());
  }
  return rows;
}

// World positions of every joint of a BVH file at pFrames (all when omitted), in the file's
// unit, by three.js's BVH loader: { rows, framesPerSecond, frameCount } with rows a Map
// "frame joint" -> [x, y, z]; an End Site counts as its joint's name with "_End".
export function bvhPositions(pFile, pFrames) {
  const { skeleton, clip } = new BVHLoader().parse(fs.readFileSync(pFile, 'latin1'));
  // Track names cannot hold some characters of joint names (such as ':'): bind through clean names.
  const names = new Map();
  const cleanOf = new Map();
  for (const bone of skeleton.bones) {
    const clean = `${THREE.PropertyBinding.sanitizeNodeName(bone.name)}_${names.size}`;
    names.set(clean, bone.name);
    if (!cleanOf.has(bone.name)) cleanOf.set(bone.name, clean);
    bone.name = clean;
  }
  for (const track of clip.tracks) {
    const dot = track.name.lastIndexOf('.');
    track.name = cleanOf.get(track.name.slice(0, dot)) + track.name.slice(dot);
  }
  const root = new THREE.Group();
  root.add(skeleton.bones[0]);
  const { times } = clip.tracks[0];
  const frameCount = times.length;
  const pose = player(root, clip);
  const rows = new Map();
  for (const frame of pFrames ?? framesOf(frameCount, 1)) {
    // Each frame at its own keyframe time, which the loader keeps as a 32-bit float.
    pose(times[frame]);
    for (const bone of skeleton.bones) {
      const name = names.get(bone.name) === 'ENDSITE' ? `${names.get(bone.parent.name)}_End` : names.get(bone.name);
      rows.set(`${frame} ${name}`, bone.getWorldPosition(new THREE.Vector3()).toArray());
    }
  }
  return { rows, framesPerSecond: frameCount > 1 ? (frameCount - 1) / clip.duration : 1, frameCount };
}

// The name three.js gives a node: some characters of glTF names are not allowed in its names.
export function threeName(pName) {
  return THREE.PropertyBinding.sanitizeNodeName(pName);
}

// The largest distance between pActual (times pScale) and pExpected over every row of pExpected;
// throws when pActual lacks one.
export function largestDifference(pExpected, pActual, pScale = 1) {
  let largest = 0;
  for (const [key, expected] of pExpected) {
    const actual = pActual.get(key);
    if (!actual) throw new Error(`no joint position for frame and joint ${key}`);
    largest = Math.max(largest, Math.hypot(actual[0] * pScale - expected[0], actual[1] * pScale - expected[1],
                                           actual[2] * pScale - expected[2]));
  }
  return largest;
}
