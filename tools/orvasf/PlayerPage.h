#ifndef ORVASF_TOOLS_ORVASF_PLAYERPAGE_H
#define ORVASF_TOOLS_ORVASF_PLAYERPAGE_H

#include <string>

namespace orvasf::tool {

// The HTML page of the motion player (tools/orvasf/player/), with three.js and the player's
// script inlined at build time. It holds the placeholders "@ORV_CONFIG@" (the JSON settings) and
// "@ORV_GLB@" (the base64 text of a .glb file), each once and ahead of the inlined scripts.
// Empty when the build found no three.js package (node_modules/three) to inline. Costs a copy
// of the page, about 2 MB.
std::string PlayerPageTemplate();

} // namespace orvasf::tool

#endif
