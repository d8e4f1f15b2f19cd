#!/usr/bin/env python3
"""Writes the bundled sample skeleton (walker.asf) and a two-second walk (walker.amc).

The skeleton is a small humanoid in the usual layout of motion-capture skeletons: lengths in
units of 1/0.45 inch, angles in degrees, hip joints without degrees of freedom.
"""
import math
import os

HERE = os.path.dirname(os.path.abspath(__file__))

# name, direction, length, axis, dof, limits (one pair per dof)
BONES = [
    ("lhipjoint", (0.64, -0.72, 0.26), 2.4, (0, 0, 0), (), ()),
    ("lfemur", (0.34, -0.94, 0), 7.1, (0, 0, 20), ("rx", "ry", "rz"), ((-160, 20), (-70, 70), (-60, 70))),
    ("ltibia", (0.34, -0.94, 0), 7.3, (0, 0, 20), ("rx",), ((-10, 170),)),
    ("lfoot", (0, 0, 1), 2.3, (-90, 7, 20), ("rx", "rz"), ((-45, 90), (-70, 20))),
    ("rhipjoint", (-0.64, -0.72, 0.26), 2.4, (0, 0, 0), (), ()),
    ("rfemur", (-0.34, -0.94, 0), 7.1, (0, 0, -20), ("rx", "ry", "rz"), ((-160, 20), (-70, 70), (-70, 60))),
    ("rtibia", (-0.34, -0.94, 0), 7.3, (0, 0, -20), ("rx",), ((-10, 170),)),
    ("rfoot", (0, 0, 1), 2.3, (-90, -7, -20), ("rx", "rz"), ((-45, 90), (-20, 70))),
    ("lowerback", (0.01, 1, -0.02), 2.1, (0, 0, 0), ("rx", "ry", "rz"), ((-20, 45), (-30, 30), (-30, 30))),
    ("upperback", (0.01, 1, 0.01), 2.1, (0, 0, 0), ("rx", "ry", "rz"), ((-20, 45), (-30, 30), (-30, 30))),
    ("neck", (0, 1, 0.05), 1.6, (0, 0, 0), ("rx", "ry", "rz"), ((-40, 70), (-60, 60), (-45, 45))),
    ("head", (0, 1, -0.05), 1.6, (0, 0, 0), ("rx", "ry", "rz"), ((-40, 70), (-60, 60), (-45, 45))),
    ("lclavicle", (0.92, 0.4, 0), 3.4, (0, 0, -20), ("ry", "rz"), ((-20, 10), (-20, 0))),
    ("lhumerus", (1, 0, 0), 5.0, (0, 0, -90), ("rx", "ry", "rz"), ((-60, 90), (-90, 90), (-90, 90))),
    ("lradius", (1, 0, 0), 3.7, (0, 0, -90), ("rx",), ((-10, 170),)),
    ("lhand", (1, 0, 0), 1.4, (0, 0, -90), ("rz", "rx"), ((-90, 90), (-20, 20))),
    ("rclavicle", (-0.92, 0.4, 0), 3.4, (0, 0, 20), ("ry", "rz"), ((-10, 20), (0, 20))),
    ("rhumerus", (-1, 0, 0), 5.0, (0, 0, 90), ("rx", "ry", "rz"), ((-60, 90), (-90, 90), (-90, 90))),
    ("rradius", (-1, 0, 0), 3.7, (0, 0, 90), ("rx",), ((-10, 170),)),
    ("rhand", (-1, 0, 0), 1.4, (0, 0, 90), ("rz", "rx"), ((-90, 90), (-20, 20))),
]

HIERARCHY = [
    ("root", ("lhipjoint", "rhipjoint", "lowerback")),
    ("lhipjoint", ("lfemur",)),
    ("lfemur", ("ltibia",)),
    ("ltibia", ("lfoot",)),
    ("rhipjoint", ("rfemur",)),
    ("rfemur", ("rtibia",)),
    ("rtibia", ("rfoot",)),
    ("lowerback", ("upperback",)),
    ("upperback", ("neck", "lclavicle", "rclavicle")),
    ("neck", ("head",)),
    ("lclavicle", ("lhumerus",)),
    ("lhumerus", ("lradius",)),
    ("lradius", ("lhand",)),
    ("rclavicle", ("rhumerus",)),
    ("rhumerus", ("rradius",)),
    ("rradius", ("rhand",)),
]


def write_skeleton(path):
    lines = [
        "# Sample skeleton of the orvasf project: a small humanoid.",
        ":version 1.10",
        ":name walker",
        ":units",
        "  mass 1.0",
        "  length 0.45",
        "  angle deg",
        ":documentation",
        "  Hand-made sample; see generate.py.",
        ":root",
        "  order TX TY TZ RX RY RZ",
        "  axis XYZ",
        "  position 0 0 0",
        "  orientation 0 0 0",
        ":bonedata",
    ]
    for number, (name, direction, length, axis, dof, limits) in enumerate(BONES, 1):
        norm = math.sqrt(sum(c * c for c in direction))
        unit = tuple(c / norm for c in direction)
        lines += [
            "  begin",
            f"    id {number}",
            f"    name {name}",
            "    direction {:.6f} {:.6f} {:.6f}".format(*unit),
            f"    length {length}",
            "    axis {} {} {} XYZ".format(*axis),
        ]
        if dof:
            lines.append("    dof " + " ".join(dof))
            pairs = [f"({low:.1f} {high:.1f})" for low, high in limits]
            lines.append("    limits " + pairs[0])
            lines += ["           " + pair for pair in pairs[1:]]
        lines.append("  end")
    lines += [":hierarchy", "  begin"]
    lines += ["    " + " ".join((parent,) + children) for parent, children in HIERARCHY]
    lines += ["  end"]
    with open(path, "w", newline="\n") as out:
        out.write("\n".join(lines) + "\n")


def pose(t):
    """DOF values of every bone at time t (seconds) of a walk cycle of 1.1 s."""
    phase = 2 * math.pi * t / 1.1
    swing = math.sin(phase)
    values = {
        "root": (0.0, 16.5 + 0.4 * math.cos(2 * phase), 22.0 * t, 2 * math.sin(2 * phase), 5 * swing, 0.0),
        "lfemur": (-25 * swing, 3 * swing, 2.0),
        "ltibia": (25 * (1 - math.cos(phase)) / 2 + 5,),
        "lfoot": (10 * swing, -3.0),
        "rfemur": (25 * swing, -3 * swing, -2.0),
        "rtibia": (25 * (1 + math.cos(phase)) / 2 + 5,),
        "rfoot": (-10 * swing, 3.0),
        "lowerback": (5.0, -4 * swing, 1.0),
        "upperback": (2.0, -3 * swing, 0.0),
        "neck": (-5.0, 3 * swing, 0.0),
        "head": (-3.0, 2 * swing, 0.0),
        "lclavicle": (0.0, -2.0),
        "lhumerus": (20 * swing, 5.0, -70.0),
        "lradius": (20 - 10 * swing,),
        "lhand": (-5.0, 0.0),
        "rclavicle": (0.0, 2.0),
        "rhumerus": (-20 * swing, -5.0, 70.0),
        "rradius": (20 + 10 * swing,),
        "rhand": (5.0, 0.0),
    }
    return values


def write_motion(path, seconds=2.0, fps=120):
    lines = ["# Sample motion of the orvasf project: two seconds of walking.", ":FULLY-SPECIFIED", ":DEGREES"]
    for frame in range(int(seconds * fps)):
        lines.append(str(frame + 1))
        for bone, values in pose(frame / fps).items():
            lines.append(bone + " " + " ".join(f"{v:.6g}" for v in values))
    with open(path, "w", newline="\n") as out:
        out.write("\n".join(lines) + "\n")


if __name__ == "__main__":
    write_skeleton(os.path.join(HERE, "walker.asf"))
    write_motion(os.path.join(HERE, "walker.amc"))
