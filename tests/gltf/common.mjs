// What the glTF checks share: the tool, the shared motion files, scratch folders and the rule
// for skipping when a prerequisite is missing.
import { execFileSync } from 'node:child_process';
import fs from 'node:fs';
import os from 'node:os';
import path from 'node:path';

// ctest treats this exit status as a skipped test (SKIP_RETURN_CODE).
export const kSkip = 77;

export function skip(pReason) {
  console.log(`SKIP: ${pReason}`);
  process.exit(kSkip);
}

// The arguments every check takes: the orvasf binary, the repository and the shared data folder.
export function setup() {
  const [tool, source, data] = process.argv.slice(2);
  if (!fs.existsSync(path.join(data, 'asf'))) skip(`the shared data folder ${data} is absent`);
  const work = fs.mkdtempSync(path.join(os.tmpdir(), 'orvgltf-'));
  process.on('exit', () => fs.rmSync(work, { recursive: true, force: true }));
  return { tool, source, data, work };
}

// The skeleton and motion pairs, as the C++ suites list them, so both always agree.
export function motionPairs(pSource) {
  const header = fs.readFileSync(path.join(pSource, 'tests/support/SharedMotionPairs.h'), 'utf8');
  return [...header.matchAll(/\{"([^"]+)", "([^"]+)"\}/g)].map(([, asf, amc]) => ({ asf, amc }));
}

export function bvhFiles(pData) {
  return fs.readdirSync(path.join(pData, 'bvh')).filter((f) => f.endsWith('.bvh')).sort();
}

// Runs orvasf with pArgs; its standard output.
export function orvasf(pTool, pArgs) {
  return execFileSync(pTool, pArgs, { encoding: 'utf8', maxBuffer: 1 << 30, stdio: ['ignore', 'pipe', 'pipe'] });
}

// Converts a shared pair or BVH file (pSource: { asf, amc } or { bvh }) to pOutput.
export function convert(pContext, pSource, pOutput, pExtra = []) {
  const { tool, data } = pContext;
  const input = pSource.bvh
    ? [path.join(data, 'bvh', pSource.bvh)]
    : [path.join(data, 'asf', `${pSource.asf}.asf`), '--motion', path.join(data, 'amc', `${pSource.amc}.amc`)];
  orvasf(tool, ['convert', ...input, '-o', pOutput, ...pExtra]);
}

// World positions of `orvasf pose` (centimetres) by frame and joint: Map "frame joint" -> [x, y, z].
export function posePositions(pTool, pAsf, pAmc, pFrames) {
  const csv = orvasf(pTool, ['pose', pAsf, pAmc, '--frames', pFrames.join(',')]);
  const rows = new Map();
  for (const line of csv.trim().split('\n').slice(1)) {
    const fields = line.split(',');
    rows.set(`${fields[0]} ${fields[1]}`, fields.slice(2).map(Number));
  }
  return rows;
}

// Prints the closing line ctest's log keeps, and exits with the verdict.
export function finish(pPassed, pFailed) {
  console.log(`${pPassed} passed, ${pFailed} failed`);
  process.exit(pFailed > 0 ? 1 : 0);
}

export function requireModules(pSource) {
  if (!fs.existsSync(path.join(pSource, 'node_modules/three')) ||
      !fs.existsSync(path.join(pSource, 'node_modules/gltf-validator')))
    skip('node_modules is missing: run npm ci in the repository (scripts/setup.sh does)');
}
