#ifndef ORVASF_TOOLS_ORVASF_SCENEJSONWRITER_H
#define ORVASF_TOOLS_ORVASF_SCENEJSONWRITER_H

namespace orvasf {
struct OrvImportResult;
}

namespace orvasf::tool {

class OutputText;

// Writes the host scene of a finished import as one JSON object: the scene and take names,
// the frame rate, "nodes" (every node below the scene's root node, a node before its children,
// with its parent, attribute, rest transform, rotation settings and limits) and "curves" (every
// curve of the take with its node, property, channel and keys as [seconds, value]). Each node
// and each curve takes one line, so the text stays readable and greppable. Streams: memory is
// bounded by the largest curve. False once a write failed.
bool WriteSceneJson(const OrvImportResult& pImport, OutputText& pOutput);

} // namespace orvasf::tool

#endif
