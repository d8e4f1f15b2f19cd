#!/usr/bin/env python3
"""Writes the seed corpora of the fuzz targets into OUTPUT/<target>/.

Usage: make_corpus.py OUTPUT
       make_corpus.py --shared DATA OUTPUT

The seeds come from the project's own samples (examples/walker.asf and walker.amc, whole and cut
at section, block and frame boundaries) and from the hand-made cases in fuzz/seeds/. Each seed
is laid out as its target expects: a flags byte before ASF and AMC text, the "@amc" line between
skeleton and motion, and an operation script behind the text of the text-file target.

With --shared, the seeds come from the real files of the folder DATA instead (its asf/ and amc/
folders; motions cut to their first frames): a larger corpus for local runs, never committed.
"""
import hashlib
import os
import sys

HERE = os.path.dirname(os.path.abspath(__file__))
EXAMPLES = os.path.join(HERE, "..", "examples")
SEEDS = os.path.join(HERE, "seeds")

# Keep seeds small: libFuzzer's default input size limit follows the largest seed.
MAX_SEED = 6000
MOTION_MARKER = b"\n@amc\n"
# A motion for the bones of seeds/asf/chain.asf.
CHAIN_MOTION = b":DEGREES\n1\nroot 0 0 0 0 0 0\nb2 5\nb4 1\nb5 2\n2\nb2 6\nb4 2\nb5 3\nroot 1 0 0 0 0 90\n"


def read(path):
    with open(path, "rb") as handle:
        return handle.read()


def hand_made(kind):
    folder = os.path.join(SEEDS, kind)
    return [read(os.path.join(folder, name)) for name in sorted(os.listdir(folder))]


def lines_of(text):
    return text.splitlines(keepends=True)


def skeleton_pieces(text):
    """The whole skeleton, every prefix that ends before a section or a bone block, and the
    skeleton cut down to its first few bones."""
    lines = lines_of(text)
    pieces = [text]
    for index, line in enumerate(lines):
        word = line.strip()
        if index > 0 and (word.startswith(b":") or word == b"begin"):
            pieces.append(b"".join(lines[:index]))
    header_end = next(i for i, line in enumerate(lines) if line.startswith(b":bonedata"))
    hierarchy = next(i for i, line in enumerate(lines) if line.startswith(b":hierarchy"))
    blocks = [i for i in range(header_end, hierarchy) if lines[i].strip() == b"begin"]
    for count in (1, 2, 4):
        end = blocks[count] if count < len(blocks) else hierarchy
        pieces.append(b"".join(lines[: end] + lines[hierarchy:]))
    return pieces


def motion_pieces(text, frames=(1, 2, 3)):
    """The header with the first frames, and a cut inside a frame."""
    lines = lines_of(text)
    starts = [i for i, line in enumerate(lines) if line.strip().isdigit()]
    pieces = [b"".join(lines[: starts[count]]) if count < len(starts) else text for count in frames]
    if len(starts) > 1:
        pieces.append(b"".join(lines[: starts[1] + 4]))
    return pieces


def text_seed(text, script, skip_empty_lines):
    """Text, then the operation script backwards, its length and the skip flag: the text-file
    target takes its parameters from the end of the input."""
    return text + bytes(reversed(script)) + bytes([len(script), 1 if skip_empty_lines else 0])


def write_corpus(folder, seeds):
    os.makedirs(folder, exist_ok=True)
    for seed in seeds:
        if len(seed) > MAX_SEED:
            continue
        name = hashlib.sha1(seed).hexdigest()
        with open(os.path.join(folder, name), "wb") as handle:
            handle.write(seed)


def write_all(output, skeletons, motions, pairs, texts):
    asf = [bytes([index % 8]) + text for index, text in enumerate(skeletons)]
    write_corpus(os.path.join(output, "fuzz_asf_reader"), asf)

    amc = [bytes([index % 16]) + text for index, text in enumerate(motions)]
    write_corpus(os.path.join(output, "fuzz_amc_reader"), amc)

    skeleton_seeds = [bytes([index % 16]) + asf_text + MOTION_MARKER + amc_text
                      for index, (asf_text, amc_text) in enumerate(pairs)]
    write_corpus(os.path.join(output, "fuzz_amc_skeleton"), skeleton_seeds)

    every_operation = list(range(12)) + [0x84, 0x16, 0x17, 0x18, 0xF4]
    numbers_first = [0, 2, 3, 1, 5, 9]
    text_seeds = [text_seed(text, script, skip)
                  for text in texts
                  for script in (every_operation, numbers_first)
                  for skip in (True, False)]
    write_corpus(os.path.join(output, "fuzz_textfile"), text_seeds)

    # Each glTF seed sampled at its keyframe times and at 24 frames per second.
    gltf_seeds = [bytes([rate]) + seed for seed in hand_made("gltf") for rate in (0, 24)]
    write_corpus(os.path.join(output, "fuzz_gltf_reader"), gltf_seeds)


def from_examples(output):
    walker_asf = read(os.path.join(EXAMPLES, "walker.asf"))
    walker_amc = read(os.path.join(EXAMPLES, "walker.amc"))
    skeletons = skeleton_pieces(walker_asf) + hand_made("asf")
    skeletons += [walker_asf] * 8  # every combination of the flags on the whole sample
    motions = motion_pieces(walker_amc) + hand_made("amc")
    pairs = [(walker_asf, motion) for motion in motion_pieces(walker_amc, frames=(1, 2))]
    pairs += [(skeleton, CHAIN_MOTION) for skeleton in hand_made("asf")]
    pairs += [(skeleton, motions[0]) for skeleton in skeleton_pieces(walker_asf)[-3:]]
    texts = hand_made("text") + [b"".join(lines_of(walker_asf)[:48])]
    write_all(output, skeletons, motions, pairs, texts)


def from_shared(data, output):
    def files(kind):
        folder = os.path.join(data, kind)
        return {name[: -len(kind) - 1]: read(os.path.join(folder, name))
                for name in sorted(os.listdir(folder)) if name.endswith("." + kind)}

    asf_files = files("asf")
    amc_files = files("amc")
    skeletons = list(asf_files.values())
    motions = [piece for text in amc_files.values() for piece in motion_pieces(text, frames=(1, 2))]
    # Each motion with the skeleton whose name shares the longest start with the motion's.
    def skeleton_for(motion_name):
        return max(asf_files, key=lambda name: len(os.path.commonprefix([name, motion_name])))
    pairs = [(asf_files[skeleton_for(name)], motion_pieces(text, frames=(1,))[0])
             for name, text in amc_files.items()]
    texts = [b"".join(lines_of(text)[:60]) for text in skeletons]
    write_all(output, skeletons, motions, pairs, texts)


def main():
    arguments = sys.argv[1:]
    global MAX_SEED
    if len(arguments) == 3 and arguments[0] == "--shared":
        MAX_SEED = 1 << 16
        from_shared(arguments[1], arguments[2])
    elif len(arguments) == 1:
        from_examples(arguments[0])
    else:
        sys.exit(__doc__)


if __name__ == "__main__":
    main()
