"""A small pure-Python ASF/AMC reader with forward kinematics: the yardstick the orvasf package's
benchmark (bench/python_bench.py) measures itself against. Standard library only, like the
readers Python users write for themselves; it handles what the shared CMU files need (units,
root order and orientation, bone axes in any order, DOF lists, degrees or radians).

world_positions(asf_text, amc_text) returns, per frame, a dict joint name -> (x, y, z) in cm:
every bone's joint, and "NAME_End" at the end of each leaf bone.
"""
import math

CM_PER_INCH = 2.54


def rotation(axis, degrees):
    c, s = math.cos(math.radians(degrees)), math.sin(math.radians(degrees))
    if axis == "x":
        return [[1.0, 0.0, 0.0], [0.0, c, -s], [0.0, s, c]]
    if axis == "y":
        return [[c, 0.0, s], [0.0, 1.0, 0.0], [-s, 0.0, c]]
    return [[c, -s, 0.0], [s, c, 0.0], [0.0, 0.0, 1.0]]


def multiply(a, b):
    return [[sum(a[i][k] * b[k][j] for k in range(3)) for j in range(3)] for i in range(3)]


def transpose(a):
    return [[a[j][i] for j in range(3)] for i in range(3)]


def apply(a, v):
    return [a[i][0] * v[0] + a[i][1] * v[1] + a[i][2] * v[2] for i in range(3)]


def read_asf(text):
    units = {"length": 1.0, "angle": "deg"}
    bones = {"root": {"vector": [0.0, 0.0, 0.0], "length": 0.0, "axis": [0.0] * 3, "axis_order": "XYZ",
                      "dofs": [], "children": []}}
    section, bone = None, None
    for line in text.splitlines():
        words = line.split()
        if not words or words[0].startswith("#"):
            continue
        if words[0].startswith(":"):
            section = words[0]
            continue
        key, values = words[0].lower(), words[1:]
        if section == ":units" and key in units:
            units[key] = float(values[0]) if key == "length" else values[0].lower()
        elif section == ":root":
            if key == "order":
                bones["root"]["dofs"] = [v.lower() for v in values]
            elif key == "axis":
                bones["root"]["axis_order"] = values[0]
            elif key == "orientation":
                bones["root"]["axis"] = [float(v) for v in values]
        elif section == ":bonedata":
            if key == "begin":
                bone = {"dofs": [], "children": []}
            elif key == "end":
                bones[bone["name"]] = bone
            elif key == "name":
                bone["name"] = values[0]
            elif key == "direction":
                bone["vector"] = [float(v) for v in values]
            elif key == "length":
                bone["length"] = float(values[0])
            elif key == "axis":
                bone["axis"], bone["axis_order"] = [float(v) for v in values[:3]], values[3]
            elif key == "dof":
                bone["dofs"] = [v.lower() for v in values]
        elif section == ":hierarchy" and key not in ("begin", "end"):
            bones[words[0]]["children"] += words[1:]
    to_cm = CM_PER_INCH / units["length"]
    angle = 180.0 / math.pi if units["angle"].startswith("rad") else 1.0
    for bone in bones.values():
        frame = [[1.0, 0.0, 0.0], [0.0, 1.0, 0.0], [0.0, 0.0, 1.0]]
        for letter in bone["axis_order"]:
            frame = multiply(rotation(letter.lower(), bone["axis"]["XYZ".index(letter.upper())] * angle), frame)
        bone["frame"], bone["frame_inverse"] = frame, transpose(frame)
        bone["vector"] = [v * bone["length"] * to_cm for v in bone["vector"]]
    return bones, to_cm


def read_amc(text):
    frames, radians = [], False
    for line in text.splitlines():
        words = line.split()
        if not words or words[0].startswith("#"):
            continue
        if words[0].startswith(":"):
            radians = radians or words[0].upper() == ":RADIANS"
        elif words[0].isdigit():
            frames.append({})
        else:
            frames[-1][words[0]] = [float(v) for v in words[1:]]
    return frames, radians


def world_positions(asf_text, amc_text):
    bones, to_cm = read_asf(asf_text)
    frames, radians = read_amc(amc_text)
    to_degrees = 180.0 / math.pi if radians else 1.0
    poses = []
    for values in frames:
        pose = {}
        pending = [("root", [[1.0, 0.0, 0.0], [0.0, 1.0, 0.0], [0.0, 0.0, 1.0]], None)]
        while pending:
            name, parent_world, start = pending.pop()
            bone = bones[name]
            motion = [[1.0, 0.0, 0.0], [0.0, 1.0, 0.0], [0.0, 0.0, 1.0]]
            translation = [0.0, 0.0, 0.0]
            for dof, value in zip(bone["dofs"], values.get(name, [])):
                if dof[0] == "r":
                    motion = multiply(rotation(dof[1], value * to_degrees), motion)
                else:
                    translation["xyz".index(dof[1])] = value * to_cm
            world = multiply(multiply(multiply(parent_world, bone["frame"]), motion), bone["frame_inverse"])
            start = translation if start is None else start
            end = [s + v for s, v in zip(start, apply(world, bone["vector"]))]
            pose[name] = start
            if not bone["children"] and bone["length"] > 0:
                pose[name + "_End"] = end
            pending += [(child, world, end) for child in bone["children"]]
        poses.append(pose)
    return poses
