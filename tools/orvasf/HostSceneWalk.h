#ifndef ORVASF_TOOLS_ORVASF_HOSTSCENEWALK_H
#define ORVASF_TOOLS_ORVASF_HOSTSCENEWALK_H

#include <vector>

namespace orvsdk {
class OrvAnimCurve;
class OrvAnimStack;
class OrvNode;
}

namespace orvasf::tool {

// pTop and every node below it, a node before its children, children in order.
std::vector<orvsdk::OrvNode*> CollectNodes(orvsdk::OrvNode* pTop);

// One curve animating a channel of a node's local transform.
struct CurveBinding
{
    orvsdk::OrvNode* mNode;
    const char* mProperty;  // "translation", "rotation" or "scaling"
    unsigned mChannel;      // 0 X, 1 Y, 2 Z
    orvsdk::OrvAnimCurve* mCurve;
};

// Every curve connected to the local translation, rotation and scaling of pNodes in pTake's
// base layer, node by node in the given order, then property, channel and connection order.
std::vector<CurveBinding> CollectCurves(const std::vector<orvsdk::OrvNode*>& pNodes, orvsdk::OrvAnimStack* pTake);

} // namespace orvasf::tool

#endif
