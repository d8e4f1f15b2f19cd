#ifndef ORVSDK_ORVSDK_H
#define ORVSDK_ORVSDK_H

// Every public header of the ASF skeleton module and of the host layer it sits on, for programs
// that would rather include one header than find the ones they use.

#include "orvsdk/host/anim/OrvAnimCurve.h"
#include "orvsdk/host/anim/OrvAnimCurveKey.h"
#include "orvsdk/host/anim/OrvAnimCurveNode.h"
#include "orvsdk/host/anim/OrvAnimLayer.h"
#include "orvsdk/host/anim/OrvAnimStack.h"
#include "orvsdk/host/core/OrvArray.h"
#include "orvsdk/host/core/OrvMemory.h"
#include "orvsdk/host/core/OrvStatus.h"
#include "orvsdk/host/core/OrvString.h"
#include "orvsdk/host/core/OrvTime.h"
#include "orvsdk/host/filter/OrvAnimCurveFilter.h"
#include "orvsdk/host/filter/OrvAnimCurveFilterConstantKeyReducer.h"
#include "orvsdk/host/filter/OrvAnimCurveFilterGimbleKiller.h"
#include "orvsdk/host/filter/OrvAnimCurveFilterUnroll.h"
#include "orvsdk/host/filter/OrvRotationCurves.h"
#include "orvsdk/host/io/OrvDiagnostics.h"
#include "orvsdk/host/io/OrvNumberText.h"
#include "orvsdk/host/io/OrvTextFile.h"
#include "orvsdk/host/math/OrvAMatrix.h"
#include "orvsdk/host/math/OrvEuler.h"
#include "orvsdk/host/math/OrvVector4.h"
#include "orvsdk/host/scene/OrvClassId.h"
#include "orvsdk/host/scene/OrvCriteria.h"
#include "orvsdk/host/scene/OrvGlobalSettings.h"
#include "orvsdk/host/scene/OrvLimits.h"
#include "orvsdk/host/scene/OrvNode.h"
#include "orvsdk/host/scene/OrvNodeAttribute.h"
#include "orvsdk/host/scene/OrvObject.h"
#include "orvsdk/host/scene/OrvPoseEvaluator.h"
#include "orvsdk/host/scene/OrvProperty.h"
#include "orvsdk/host/scene/OrvScene.h"
#include "orvsdk/host/scene/OrvSkeleton.h"

#include "orvsdk/asf/OrvFileAcclaimAsf.h"
#include "orvsdk/skeleton/OrvAsfDof.h"
#include "orvsdk/skeleton/OrvAsfNode.h"
#include "orvsdk/skeleton/OrvAsfScene.h"
#include "orvsdk/skeleton/OrvRotationOrder.h"

/// @namespace orvsdk
/// The ASF skeleton module (OrvFileAcclaimAsf, OrvAsfScene, OrvAsfNode) and the host layer it
/// sits on: memory, math, text files and diagnostics, the scene graph, animation and curve filters.

#endif
