"""Acclaim ASF/AMC and BVH motion capture in NumPy arrays.

Reads skeletons and motions with the orvasf C++ library, evaluates world positions,
transforms and local rotations of every joint at every frame, and writes BVH and ASF/AMC
files.

    import orvasf
    motion = orvasf.load("walker.asf", "walker.amc")
    xyz = motion.positions()          # (frames, joints, 3) float64, centimetres
    xyz30 = motion.positions(fps=30)  # the same motion evaluated at 30 frames per second

A refused file raises ReadError (a ValueError) naming the file and line; the files'
warnings arrive through the warnings module as ReadWarning, as "FILE:LINE: warning: TEXT".
The GIL is released while files are read and poses evaluated.
"""

import os
import warnings

from ._orvasf import Motion, Skeleton, __version__, _import_asf, _import_bvh

__all__ = ["Motion", "ReadError", "ReadWarning", "Skeleton", "load", "read_amc", "read_asf", "read_bvh"]


class ReadError(ValueError):
    """A file was refused.

    Attributes: ``file`` and ``line`` of the error (line 0 when it concerns the whole file),
    and ``messages``, every warning and error of the read as "FILE:LINE: error: TEXT" lines.
    """

    def __init__(self, file, line, messages):
        super().__init__("\n".join(messages))
        self.file = file
        self.line = line
        self.messages = messages


class ReadWarning(UserWarning):
    """A warning about a file that was read all the same."""


def _path(path, what):
    if not isinstance(path, (str, os.PathLike)):
        raise TypeError(f"{what} must be a path (str or os.PathLike), not {type(path).__name__}")
    return os.fsdecode(path)


def _finish(result):
    """The object of a read, after its warnings were issued; ReadError when it was refused."""
    value, messages = result
    error = None
    for kind, file, line, _text, formatted in messages:
        if kind == "warning":
            warnings.warn(formatted, ReadWarning, stacklevel=3)
        elif error is None:
            error = (file, line)
    if value is None:
        file, line = error if error else ("", 0)
        raise ReadError(file, line, [m[4] for m in messages])
    return value


def read_asf(path):
    """Reads an ASF skeleton file and returns its Skeleton (raises ReadError when refused)."""
    return _finish(_import_asf(_path(path, "path"), "", 120.0, False, False, False, False, "none", False,
                               "Take 001", 1)).skeleton


def read_amc(path, skeleton, fps=120.0, *, remove_dummy=False, rotation_offset=False, pre_rotation=False,
             limits=False, rotation_filter="none", reduce_keys=False, take="Take 001", threads=0):
    """Reads an AMC motion for ``skeleton`` (a Skeleton from read_asf) and returns its Motion.

    The settings are the orvasf tool's import flags: fps (frames per second, default 120),
    remove_dummy (drop the bones without DOFs), rotation_offset and pre_rotation (where each
    bone's rest pose is kept; world positions agree either way), limits, rotation_filter
    ("none", "gimbal" or "unroll"), reduce_keys, take (the animation take's name), threads
    (threads sampling the motion while it is read; 0: one per core; the result is the same). The
    skeleton's ASF file is read again with them, so skeleton and motion always agree. Raises
    ReadError when a file is refused.
    """
    if not isinstance(skeleton, Skeleton):
        raise TypeError(f"skeleton must be an orvasf.Skeleton, not {type(skeleton).__name__}")
    if not skeleton.path:
        raise ValueError("an AMC motion needs a skeleton read from an ASF file, not from BVH")
    return _finish(_import_asf(skeleton.path, _path(path, "path"), fps, remove_dummy, rotation_offset,
                               pre_rotation, limits, rotation_filter, reduce_keys, take, threads))


def read_bvh(path, *, take="Take 001"):
    """Reads a BVH file and returns its Motion, at the frame rate the file states."""
    return _finish(_import_bvh(_path(path, "path"), take))


def load(asf, amc=None, fps=120.0, *, remove_dummy=False, rotation_offset=False, pre_rotation=False,
         limits=False, rotation_filter="none", reduce_keys=False, take="Take 001", threads=0):
    """Reads an ASF skeleton and, when given, its AMC motion, and returns the Motion.

    Without ``amc`` the Motion has one frame, the rest pose. Settings as for read_amc.
    """
    amc_path = "" if amc is None else _path(amc, "amc")
    return _finish(_import_asf(_path(asf, "asf"), amc_path, fps, remove_dummy, rotation_offset, pre_rotation,
                               limits, rotation_filter, reduce_keys, take, threads))
