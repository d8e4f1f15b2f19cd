#!/usr/bin/env python3
"""Compares the keys and node settings that two orvasf builds import from every shared ASF/AMC
pair (and the bundled sample) under the four combinations of the set-up flags.

Keys are stored as floats: their difference is counted in units in the last place of the float
(of 1.0 for keys below 1) and reported in degrees for rotation curves. A rotation key of -180
against one of 180 is the same half-turn written two ways: such pairs are counted apart, not as
a difference. Every other number (node settings, rest values, limits) is a double: its
difference is relative to the larger magnitude (at least 1). Key times, names and the shape of
the scene must be equal.

    scripts/compare_keys.py OLD_BINARY NEW_BINARY [--max-ulps N] [--max-relative X]

Exits 1 when a difference exceeds the limits (1 ulp, 1e-9 relative by default), 2 on usage
errors or when a run fails.
"""
import argparse
import json
import math
import os
import struct
import subprocess
import sys
import tempfile

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
DATA = os.path.join(ROOT, '..', 'shared', 'data')
# The ASF each AMC pairs with, as the data README's table gives it.
SKELETON_OF = {
    'cmu02_02_01_walk': 'cmu02_fzzzz_walk_vs', 'cmu02_fzzzz_walk_01_crlf': 'cmu02_fzzzz_walk',
    'cmu_01_01': 'cmu_01', 'cmu_07_05-walk': 'cmu_07-walk', 'cmu_07_12-walk': 'cmu_07-walk',
    'cmu_09_06-run': 'cmu_09-run', 'cmu_11_01': 'cmu_11', 'cmu_131_04-dance': 'cmu_131-dance',
    'cmu_135_06-martialArts': 'cmu_135-martialArts', 'cmu_16_15': 'cmu_16', 'mo_131_04_crlf': 'mo_mjackson',
    'mo_135_02': 'mo_martialwalk', 'mo_golf_01': 'mo_golf', 'mo_md_walk': 'mo_moderndance', 'mo_null_pose': 'mo_walk',
}
FLAG_SETS = [[], ['--rotation-offset'], ['--pre-rotation'], ['--rotation-offset', '--pre-rotation']]


def pairs():
    yield os.path.join(ROOT, 'examples', 'walker.asf'), os.path.join(ROOT, 'examples', 'walker.amc')
    if not os.path.isdir(DATA):
        return
    for motion, skeleton in sorted(SKELETON_OF.items()):
        yield os.path.join(DATA, 'asf', skeleton + '.asf'), os.path.join(DATA, 'amc', motion + '.amc')


def import_scene(binary, asf, amc, flags, work):
    out = os.path.join(work, 'scene.json')
    run = subprocess.run([binary, 'import', asf, '--motion', amc, *flags, '-o', out],
                         stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True)
    if run.returncode != 0:
        sys.exit('compare_keys: %s failed on %s: %s' % (binary, amc, run.stderr.strip()))
    with open(out, encoding='utf-8') as f:
        return json.load(f)


def float_ulps(a, b):
    """Distance between two float keys in units in the last place of the larger one, at least 1:
    below 1 a difference counts in the units of 1.0f (2^-23), as angles and lengths near zero are
    differences of larger numbers."""
    a32 = struct.unpack('<f', struct.pack('<f', a))[0]
    b32 = struct.unpack('<f', struct.pack('<f', b))[0]
    scale = max(abs(a32), abs(b32), 1.0)
    unit = 2.0 ** (math.frexp(scale)[1] - 24)
    return round(abs(a32 - b32) / unit)


class Worst:
    def __init__(self):
        self.ulps, self.degrees, self.relative, self.where = 0, 0.0, 0.0, {}
        self.half_turns = 0

    def key(self, old, new, rotation, where):
        if rotation and old == -new and abs(old) == 180.0:
            self.half_turns += 1
            return
        ulps = float_ulps(old, new)
        if ulps > self.ulps:
            self.ulps, self.where['ulps'] = ulps, where
        if rotation:
            self.degrees = max(self.degrees, abs(old - new))

    def number(self, old, new, where):
        relative = abs(old - new) / max(1.0, abs(old), abs(new))
        if relative > self.relative:
            self.relative, self.where['relative'] = relative, where


def compare_values(old, new, where, worst):
    """Walks two JSON values of the same shape; numbers are compared as doubles."""
    if isinstance(old, bool) or old is None or isinstance(old, str):
        if old != new:
            sys.exit('compare_keys: %s differs: %r against %r' % (where, old, new))
    elif isinstance(old, (int, float)):
        worst.number(float(old), float(new), where)
    elif isinstance(old, list):
        if not isinstance(new, list) or len(old) != len(new):
            sys.exit('compare_keys: %s differs in length' % where)
        for i, (a, b) in enumerate(zip(old, new)):
            compare_values(a, b, '%s[%d]' % (where, i), worst)
    else:
        if set(old) != set(new):
            sys.exit('compare_keys: %s has other members' % where)
        for name in old:
            compare_values(old[name], new[name], where + '.' + name, worst)


def compare_scenes(old, new, label, worst):
    compare_values(old['nodes'], new['nodes'], label + ' nodes', worst)
    if len(old['curves']) != len(new['curves']):
        sys.exit('compare_keys: %s has another number of curves' % label)
    for a, b in zip(old['curves'], new['curves']):
        where = '%s %s.%s.%s' % (label, a['node'], a['property'], a['channel'])
        if (a['node'], a['property'], a['channel']) != (b['node'], b['property'], b['channel']):
            sys.exit('compare_keys: %s is bound elsewhere' % where)
        if [t for t, _ in a['keys']] != [t for t, _ in b['keys']]:
            sys.exit('compare_keys: %s has other key times' % where)
        rotation = a['property'] == 'rotation'
        for (time, va), (_, vb) in zip(a['keys'], b['keys']):
            worst.key(va, vb, rotation, '%s at %s s' % (where, time))


def main():
    parser = argparse.ArgumentParser(description=__doc__.split('\n')[0])
    parser.add_argument('old')
    parser.add_argument('new')
    parser.add_argument('--max-ulps', type=int, default=1)
    parser.add_argument('--max-relative', type=float, default=1e-9)
    args = parser.parse_args()
    worst = Worst()
    runs = 0
    with tempfile.TemporaryDirectory() as work:
        for asf, amc in pairs():
            for flags in FLAG_SETS:
                label = '%s %s' % (os.path.basename(amc), ' '.join(flags) or '(no flags)')
                old = import_scene(os.path.abspath(args.old), asf, amc, flags, work)
                new = import_scene(os.path.abspath(args.new), asf, amc, flags, work)
                compare_scenes(old, new, label, worst)
                runs += 1
    print('%d imports compared' % runs)
    print('largest key difference: %d float ulps (%s)' % (worst.ulps, worst.where.get('ulps', '-')))
    print('largest rotation key difference: %.3g degrees' % worst.degrees)
    print('half-turn keys written as -180 in one and 180 in the other: %d' % worst.half_turns)
    print('largest other difference: %.3g relative (%s)' % (worst.relative, worst.where.get('relative', '-')))
    within = worst.ulps <= args.max_ulps and worst.relative <= args.max_relative and math.isfinite(worst.relative)
    return 0 if within else 1


if __name__ == '__main__':
    sys.exit(main())
