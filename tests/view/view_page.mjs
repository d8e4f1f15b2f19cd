// Opens pages written by `orvasf view` in Debian's headless Chromium (through puppeteer-core, on
// file:// alone) and checks what a viewer sees: every joint at several frames where `orvasf pose`
// puts it (within 1e-4 m), no request beyond the page itself and its blob/data URLs, the
// skeleton's bone colour drawn inside the projected figure's box of a screenshot, and the joint
// name on hover, the frame slider and play.
// Cases: the bundled sample, a shared ASF/AMC pair and a shared BVH file (whose expected positions
// come from its conversion to ASF/AMC); the shared ones are skipped when the data folder is absent.
// Usage: node view_page.mjs ORVASF SOURCE_DIR SHARED_DATA_DIR SCREENSHOT_DIR
import fs from 'node:fs';
import os from 'node:os';
import path from 'node:path';
import { finish, orvasf, skip } from '../gltf/common.mjs';

const kChromium = process.env.ORV_CHROMIUM ?? '/usr/bin/chromium-headless-shell';
const kTolerance = 1e-4;  // metres
// The player's bone colour (#ffd200); a screen pixel counts as bone when each channel is this close.
const kBoneRgb = [0xff, 0xd2, 0x00];
const kColourSlack = 48;
const kMinimumBonePixels = 300;

const [tool, source, data, screenshotDir] = process.argv.slice(2);
if (!fs.existsSync(kChromium)) skip(`${kChromium} is missing (scripts/setup.sh installs chromium-headless-shell)`);
if (!fs.existsSync(path.join(source, 'node_modules/puppeteer-core')))
  skip('node_modules is missing: run npm ci in the repository (scripts/setup.sh does)');
const work = fs.mkdtempSync(path.join(os.tmpdir(), 'orvview-'));
process.on('exit', () => fs.rmSync(work, { recursive: true, force: true }));
const { default: puppeteer } = await import('puppeteer-core');

// A tool built without node_modules/three has no player: nothing to open.
try {
  orvasf(tool, ['view', path.join(source, 'examples/walker.asf'), '-o', path.join(work, 'probe.html')]);
} catch (error) {
  if (String(error.stderr).includes('built without the motion player')) skip('orvasf was built without the player');
  throw error;
}

// `orvasf pose` of every frame, in metres: { frameCount, rows: Map "frame joint" -> [x, y, z] }.
function posePositions(pAsf, pAmc) {
  const rows = new Map();
  let frameCount = 0;
  for (const line of orvasf(tool, ['pose', pAsf, pAmc]).trim().split('\n').slice(1)) {
    const [frame, joint, ...xyz] = line.split(',');
    rows.set(`${frame} ${joint}`, xyz.map((value) => Number(value) / 100));
    frameCount = Math.max(frameCount, Number(frame) + 1);
  }
  return { frameCount, rows };
}

const cases = [{
  name: 'walker', input: [path.join(source, 'examples/walker.asf'), '--motion', path.join(source, 'examples/walker.amc')],
  expected: () => posePositions(path.join(source, 'examples/walker.asf'), path.join(source, 'examples/walker.amc')),
  screenshot: true,
}];
if (fs.existsSync(path.join(data, 'asf'))) {
  const asf = path.join(data, 'asf/cmu_09-run.asf'), amc = path.join(data, 'amc/cmu_09_06-run.amc');
  cases.push({ name: 'cmu_09_06-run', input: [asf, '--motion', amc], expected: () => posePositions(asf, amc) });
  // The BVH file's expected positions come from its conversion to ASF/AMC, which adds a bone without
  // degrees of freedom ("lowerbackDummy") above each joint whose parent has several children: the
  // page has no such joint.
  const bvh = path.join(data, 'bvh/imusim_16_15.bvh');
  cases.push({
    name: 'imusim_16_15', input: [bvh],
    expected: () => {
      const converted = path.join(work, 'imusim_16_15.asf');
      orvasf(tool, ['convert', bvh, '-o', converted]);
      const { frameCount, rows } = posePositions(converted, converted.replace(/\.asf$/, '.amc'));
      return { frameCount, rows: new Map([...rows].filter(([key]) => !key.endsWith('Dummy'))) };
    },
  });
} else {
  console.log(`SKIP the shared motions: ${data} is absent`);
}

// Counts the bone-coloured pixels of the PNG pShot inside and outside pBox, decoded by Chromium.
async function bonePixels(pBrowser, pShot, pBox) {
  const page = await pBrowser.newPage();
  try {
    return await page.evaluate(async (pUrl, pBoxIn, pRgb, pSlack) => {
      const image = new Image();
      image.src = pUrl;
      await image.decode();
      const canvas = document.createElement('canvas');
      canvas.width = image.width;
      canvas.height = image.height;
      const context = canvas.getContext('2d');
      context.drawImage(image, 0, 0);
      const { data: pixels } = context.getImageData(0, 0, image.width, image.height);
      let inside = 0, outside = 0;
      for (let y = 0; y < image.height; ++y)
        for (let x = 0; x < image.width; ++x) {
          const at = 4 * (y * image.width + x);
          if (![0, 1, 2].every((c) => Math.abs(pixels[at + c] - pRgb[c]) <= pSlack)) continue;
          const within = x >= pBoxIn.left && x <= pBoxIn.right && y >= pBoxIn.top && y <= pBoxIn.bottom;
          within ? ++inside : ++outside;
        }
      return { inside, outside };
    }, `data:image/png;base64,${fs.readFileSync(pShot).toString('base64')}`, pBox, kBoneRgb, kColourSlack);
  } finally {
    await page.close();
  }
}

// The box around the joints' screen positions, widened by pMargin pixels.
function boxAround(pPoints, pMargin) {
  const xs = pPoints.map((p) => p.x), ys = pPoints.map((p) => p.y);
  return { left: Math.min(...xs) - pMargin, right: Math.max(...xs) + pMargin,
           top: Math.min(...ys) - pMargin, bottom: Math.max(...ys) + pMargin };
}

// Uses the page as a viewer does: hovers the joint farthest on screen from any other, drags the
// slider and plays for a moment. Throws when the page does not answer.
async function checkControls(pTab, pLast) {
  const points = await pTab.evaluate(() => window.orvasf.jointScreenPositions());
  const gap = (p) => Math.min(...points.filter((q) => q !== p).map((q) => Math.hypot(p.x - q.x, p.y - q.y)));
  const loneliest = points.reduce((best, p) => (gap(p) > gap(best) ? p : best));
  await pTab.mouse.move(loneliest.x, loneliest.y);
  const label = await pTab.$eval('#joint-name', (e) => (e.style.display === 'block' ? e.textContent : ''));
  if (label !== loneliest.name) throw new Error(`hovering joint ${loneliest.name} shows "${label}"`);

  await pTab.$eval('#frame', (slider, f) => { slider.value = String(f); slider.dispatchEvent(new Event('input')); }, pLast);
  const shown = await pTab.$eval('#frame-number', (e) => e.textContent);
  if (shown !== `frame ${pLast} / ${pLast}`) throw new Error(`the slider at ${pLast} shows "${shown}"`);

  await pTab.click('#play');
  await pTab.waitForFunction((f) => document.getElementById('frame-number').textContent !== `frame ${f} / ${f}`,
                             { timeout: 10000 }, pLast);
  await pTab.click('#play');
  return `hover shows ${loneliest.name}; the slider and play move the frame`;
}

// Opens the page of pCase and checks it; throws with the reason on the first failure.
async function checkCase(pBrowser, pCase) {
  const page = path.join(work, `${pCase.name}.html`);
  orvasf(tool, ['view', ...pCase.input, '-o', page]);
  const expected = pCase.expected();
  const tab = await pBrowser.newPage();
  const foreign = [];
  const pageErrors = [];
  tab.on('request', (request) => { if (!/^(file|blob|data):/.test(request.url())) foreign.push(request.url()); });
  tab.on('pageerror', (error) => pageErrors.push(error.message));
  await tab.setViewport({ width: 900, height: 700 });
  await tab.goto(`file://${page}`);
  await tab.waitForFunction(() => document.title === 'ready' || document.title === 'failed', { timeout: 120000 });
  if ((await tab.title()) !== 'ready' || pageErrors.length > 0)
    throw new Error(`the page did not load: ${pageErrors.join('; ') || await tab.$eval('#failure', (e) => e.textContent)}`);

  const frameCount = await tab.evaluate(() => window.orvasf.frameCount);
  if (frameCount !== expected.frameCount) throw new Error(`${frameCount} frames for pose's ${expected.frameCount}`);
  const last = frameCount - 1;
  const frames = [...new Set([0, 1, Math.floor(last / 3), Math.floor((2 * last) / 3) + 1, last])];
  let largest = 0;
  for (const frame of frames) {
    const joints = await tab.evaluate((f) => { window.orvasf.setFrame(f); return window.orvasf.jointWorldPositions(); }, frame);
    const expectedCount = [...expected.rows.keys()].filter((key) => key.startsWith(`${frame} `)).length;
    if (joints.length !== expectedCount) throw new Error(`frame ${frame}: ${joints.length} joints for pose's ${expectedCount}`);
    for (const { name, position } of joints) {
      const want = expected.rows.get(`${frame} ${name}`);
      if (!want) throw new Error(`frame ${frame}: joint ${name} is not in pose's output`);
      largest = Math.max(largest, ...position.map((value, axis) => Math.abs(value - want[axis])));
    }
  }
  const lines = [`frames ${frames.join(',')} of ${frameCount}: largest difference from pose ${largest.toExponential(2)} m`];
  if (largest > kTolerance) throw new Error(lines[0]);
  if (foreign.length > 0) throw new Error(`the page requested ${foreign.join(', ')}`);

  if (pCase.screenshot) {
    fs.mkdirSync(screenshotDir, { recursive: true });
    const shot = path.join(screenshotDir, `${pCase.name}.png`);
    await tab.evaluate((f) => window.orvasf.setFrame(f), Math.floor(last / 2));
    await tab.screenshot({ path: shot });
    const box = boxAround(await tab.evaluate(() => window.orvasf.jointScreenPositions()), 4);
    const { inside, outside } = await bonePixels(pBrowser, shot, box);
    lines.push(`screenshot ${shot}: ${inside} bone-coloured pixels inside the figure's box, ${outside} outside`);
    if (inside < kMinimumBonePixels || outside > inside / 20) throw new Error(lines.join('; '));
    lines.push(await checkControls(tab, last));
  }
  await tab.close();
  return lines;
}

const browser = await puppeteer.launch({
  executablePath: kChromium, pipe: true, headless: 'shell',
  // WebGL on the CPU: headless Chromium has no GPU here.
  args: ['--use-angle=swiftshader', '--enable-unsafe-swiftshader', '--no-sandbox'],
});
let passed = 0, failed = 0;
try {
  for (const viewCase of cases) {
    try {
      for (const line of await checkCase(browser, viewCase)) console.log(`ok   ${viewCase.name}: ${line}`);
      ++passed;
    } catch (error) {
      console.log(`FAIL ${viewCase.name}: ${error.message}`);
      ++failed;
    }
  }
} finally {
  await browser.close();
}
finish(passed, failed);
