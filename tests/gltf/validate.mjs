// The Khronos glTF validator and assimp on the glTF files orvasf writes from every shared ASF/AMC
// pair and BVH file, as .glb and as .gltf: the validator must report no error and no warning,
// and assimp must read each file.
// Usage: node validate.mjs ORVASF SOURCE_DIR SHARED_DATA_DIR
import { execFileSync } from 'node:child_process';
import fs from 'node:fs';
import path from 'node:path';
import { bvhFiles, convert, finish, motionPairs, requireModules, setup } from './common.mjs';

const context = setup();
requireModules(context.source);
const { default: validator } = await import('gltf-validator');

const sources = [...motionPairs(context.source).map((p) => ({ ...p, name: p.amc })),
                 ...bvhFiles(context.data).map((bvh) => ({ bvh, name: path.basename(bvh, '.bvh') }))];
// One file of each input kind also with its buffer in a separate .bin file.
const outputs = (s, i) => [['.glb', []], ['.gltf', []], ...(i % 8 === 0 ? [['-separate.gltf', ['--buffer', 'separate']]] : [])];

let passed = 0, failed = 0, errors = 0, warnings = 0, files = 0;
for (const [index, source] of sources.entries()) {
  for (const [suffix, extra] of outputs(source, index)) {
    const file = path.join(context.work, source.name + suffix);
    convert(context, source, file, extra);
    const report = await validator.validateBytes(new Uint8Array(fs.readFileSync(file)), {
      uri: path.basename(file),
      externalResourceFunction: (uri) => Promise.resolve(new Uint8Array(fs.readFileSync(path.join(context.work, uri)))),
    });
    const { numErrors, numWarnings, messages } = report.issues;
    errors += numErrors;
    warnings += numWarnings;
    ++files;
    let assimpOk = true;
    try {
      execFileSync('assimp', ['info', file], { stdio: 'ignore' });
    } catch {
      assimpOk = false;
    }
    const ok = numErrors === 0 && numWarnings === 0 && assimpOk;
    ok ? ++passed : ++failed;
    const size = fs.statSync(file).size;
    console.log(`${ok ? 'ok  ' : 'FAIL'} ${path.basename(file)}: ${size} bytes, validator ${numErrors} errors ` +
                `${numWarnings} warnings, assimp ${assimpOk ? 'read it' : 'FAILED to read it'}`);
    for (const m of messages.filter((m) => m.severity <= 1).slice(0, 5))
      console.log(`     ${m.code} ${m.pointer ?? ''}: ${m.message}`);
  }
}
console.log(`validator: ${files} files, ${errors} errors, ${warnings} warnings in all`);
finish(passed, failed);
