// The player of `orvasf view`: loads the glTF binary the tool embedded, draws its skeleton over
// the skinned figure, plays the animation and exposes window.orvasf for tests.
import * as THREE from 'three';
import { GLTFLoader } from 'three/addons/loaders/GLTFLoader.js';
import { OrbitControls } from 'three/addons/controls/OrbitControls.js';

const kBoneColour = 0xffd200;  // bright yellow, seen against the figure, the grid and the background
const kJointColour = 0x00e5ff;
const kHoverColour = 0xff3da8;

const config = JSON.parse(document.getElementById('orv-config').textContent);
const controlsBar = document.getElementById('controls');
const playButton = document.getElementById('play');
const slider = document.getElementById('frame');
const frameNumber = document.getElementById('frame-number');
const jointLabel = document.getElementById('joint-name');

// The glTF binary, decoded from its base64 text.
function glbBytes() {
  const text = atob(document.getElementById('orv-glb').textContent.trim());
  const bytes = new Uint8Array(text.length);
  for (let i = 0; i < text.length; ++i) bytes[i] = text.charCodeAt(i);
  return bytes.buffer;
}

// The skinned figure's joints: { name (the glTF node's own, unsanitised), object, parent index or -1 }.
function jointsOf(gltf) {
  const joints = [];
  gltf.scene.traverse((object) => {
    const association = gltf.parser.associations.get(object);
    if (object.isBone && association?.nodes !== undefined)
      joints.push({ name: gltf.parser.json.nodes[association.nodes].name ?? '', object });
  });
  for (const joint of joints) joint.parent = joints.findIndex((other) => other.object === joint.object.parent);
  return joints;
}

// The skeleton's drawing: a sphere per joint and a cylinder from each joint to each child joint,
// unlit and drawn over the figure.
function skeletonDrawing(joints, size) {
  const group = new THREE.Group();
  const onTop = { depthTest: false, depthWrite: false };
  const boneMaterial = new THREE.MeshBasicMaterial({ color: kBoneColour, ...onTop });
  const boneGeometry = new THREE.CylinderGeometry(size * 0.008, size * 0.008, 1, 10).translate(0, 0.5, 0);
  const jointGeometry = new THREE.SphereGeometry(size * 0.014, 14, 10);
  const bones = joints.filter((joint) => joint.parent >= 0).map((joint) => {
    const mesh = new THREE.Mesh(boneGeometry, boneMaterial);
    mesh.renderOrder = 1;
    group.add(mesh);
    return { mesh, from: joints[joint.parent].object, to: joint.object };
  });
  const spheres = joints.map((joint) => {
    const mesh = new THREE.Mesh(jointGeometry, new THREE.MeshBasicMaterial({ color: kJointColour, ...onTop }));
    mesh.renderOrder = 2;
    mesh.userData.jointName = joint.name;
    group.add(mesh);
    return { mesh, joint: joint.object };
  });
  const from = new THREE.Vector3(), to = new THREE.Vector3(), up = new THREE.Vector3(0, 1, 0);
  // Moves the drawing to the joints' current world positions.
  function update() {
    for (const { mesh, joint } of spheres) joint.getWorldPosition(mesh.position);
    for (const bone of bones) {
      bone.from.getWorldPosition(from);
      bone.to.getWorldPosition(to);
      bone.mesh.position.copy(from);
      to.sub(from);
      const length = to.length();
      bone.mesh.scale.set(1, Math.max(length, 1e-9), 1);
      if (length > 0) bone.mesh.quaternion.setFromUnitVectors(up, to.divideScalar(length));
    }
  }
  return { group, spheres: spheres.map((sphere) => sphere.mesh), update };
}

function showFailure(error) {
  document.getElementById('failure').textContent = `The motion could not be shown: ${error.message ?? error}`;
  document.title = 'failed';
}

async function start() {
  document.getElementById('source').textContent = config.source;
  const gltf = await new GLTFLoader().parseAsync(glbBytes(), '');
  const joints = jointsOf(gltf);
  const frameCount = Math.max(config.frameCount, 1);

  const renderer = new THREE.WebGLRenderer({ antialias: true });
  renderer.setPixelRatio(window.devicePixelRatio);
  document.body.prepend(renderer.domElement);
  const scene = new THREE.Scene();
  scene.background = new THREE.Color(0x1d2126);
  scene.add(new THREE.HemisphereLight(0xffffff, 0x444444, 2.0));
  const light = new THREE.DirectionalLight(0xffffff, 1.5);
  light.position.set(3, 6, 4);
  scene.add(light);
  scene.add(gltf.scene);
  gltf.scene.traverse((object) => {
    if (object.isMesh) object.material = new THREE.MeshStandardMaterial({ color: 0x8a939e, roughness: 0.8 });
  });

  const mixer = new THREE.AnimationMixer(gltf.scene);
  if (gltf.animations.length > 0) {
    // Played once and held at its end, so that the last frame shows the last keys, not the first.
    const action = mixer.clipAction(gltf.animations[0]);
    action.setLoop(THREE.LoopOnce);
    action.clampWhenFinished = true;
    action.play();
  }
  // Puts the figure at frame pFrame (0-based) and the joints' world matrices up to date.
  function pose(pFrame) {
    // Keyframe times are 32-bit floats in glTF files and in three.js.
    mixer.setTime(Math.fround(pFrame / config.framesPerSecond));
    gltf.scene.updateMatrixWorld(true);
  }

  // The figure's extent at the first frame sizes the drawing, the grid and the camera.
  pose(0);
  const box = new THREE.Box3();
  for (const joint of joints) box.expandByPoint(joint.object.getWorldPosition(new THREE.Vector3()));
  const size = Math.max(box.getSize(new THREE.Vector3()).length(), 0.1);
  const center = box.getCenter(new THREE.Vector3());
  const skeleton = skeletonDrawing(joints, size);
  scene.add(skeleton.group);
  const gridSize = Math.ceil(size * 4);
  const grid = new THREE.GridHelper(gridSize, gridSize * 2, 0x6c7580, 0x3a4048);
  grid.position.set(center.x, 0, center.z);
  scene.add(grid);

  const camera = new THREE.PerspectiveCamera(45, 1, size * 0.01, size * 100);
  camera.position.set(center.x + size * 0.9, center.y + size * 0.5, center.z + size * 1.6);
  const orbit = new OrbitControls(camera, renderer.domElement);
  orbit.target.copy(center);
  orbit.update();

  let frame = 0;
  let playing = true;
  let playStart = performance.now();
  function render() {
    skeleton.update();
    renderer.render(scene, camera);
  }
  function show(pFrame) {
    frame = pFrame;
    pose(frame);
    slider.value = String(frame);
    frameNumber.textContent = `frame ${frame} / ${frameCount - 1}`;
    render();
  }
  function resize() {
    const height = window.innerHeight - controlsBar.offsetHeight;
    renderer.setSize(window.innerWidth, height);
    camera.aspect = window.innerWidth / height;
    camera.updateProjectionMatrix();
    render();
  }
  function setPlaying(pPlaying) {
    playing = pPlaying;
    playStart = performance.now() - (frame / config.framesPerSecond) * 1000;
    playButton.textContent = playing ? 'Pause' : 'Play';
  }

  slider.max = String(frameCount - 1);
  slider.addEventListener('input', () => {
    setPlaying(false);
    show(Number(slider.value));
  });
  playButton.addEventListener('click', () => setPlaying(!playing));
  orbit.addEventListener('change', render);
  window.addEventListener('resize', resize);

  // The joint under the mouse pointer shows its name beside the pointer.
  const raycaster = new THREE.Raycaster();
  let hovered = null;
  renderer.domElement.addEventListener('pointermove', (event) => {
    const rect = renderer.domElement.getBoundingClientRect();
    const pointer = new THREE.Vector2(((event.clientX - rect.left) / rect.width) * 2 - 1,
                                      -((event.clientY - rect.top) / rect.height) * 2 + 1);
    raycaster.setFromCamera(pointer, camera);
    const hit = raycaster.intersectObjects(skeleton.spheres, false)[0]?.object ?? null;
    if (hovered !== hit) {
      hovered?.material.color.setHex(kJointColour);
      hit?.material.color.setHex(kHoverColour);
      hovered = hit;
      if (!playing) render();
    }
    jointLabel.style.display = hit ? 'block' : 'none';
    if (!hit) return;
    jointLabel.textContent = hit.userData.jointName;
    jointLabel.style.left = `${event.clientX + 14}px`;
    jointLabel.style.top = `${event.clientY + 10}px`;
  });

  renderer.setAnimationLoop(() => {
    if (!playing) return;
    const elapsed = (performance.now() - playStart) / 1000;
    const next = Math.floor(elapsed * config.framesPerSecond) % frameCount;
    if (next !== frame) show(next);
  });

  // What tests drive: positions in metres, in the glTF scene's frame (Y up).
  window.orvasf = {
    ready: true,
    frameCount,
    framesPerSecond: config.framesPerSecond,
    // Stops playing and shows frame pFrame (0-based, clamped to the motion).
    setFrame(pFrame) {
      setPlaying(false);
      show(Math.min(Math.max(Math.round(pFrame), 0), frameCount - 1));
      return frame;
    },
    // [{ name, position: [x, y, z] }] of every joint at the frame shown, in metres.
    jointWorldPositions() {
      return joints.map((joint) => ({ name: joint.name, position: joint.object.getWorldPosition(new THREE.Vector3()).toArray() }));
    },
    // [{ name, x, y }] of every joint at the frame shown, in CSS pixels from the page's top left.
    jointScreenPositions() {
      const rect = renderer.domElement.getBoundingClientRect();
      return joints.map((joint) => {
        const ndc = joint.object.getWorldPosition(new THREE.Vector3()).project(camera);
        return { name: joint.name, x: rect.left + (ndc.x + 1) / 2 * rect.width, y: rect.top + (1 - ndc.y) / 2 * rect.height };
      });
    },
    boneColour: `#${kBoneColour.toString(16).padStart(6, '0')}`,
  };
  resize();
  show(0);
  document.title = 'ready';
}

start().catch(showFailure);
