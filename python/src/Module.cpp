// The compiled part of the orvasf Python package: Skeleton and Motion over a host scene imported
// by the library's import driver, with NumPy arrays filled by the whole-pose evaluator. Reading
// functions return the object (or None) together with the files' messages; the package's Python
// part turns those into warnings and ReadError.
#include "orvsdk/asf/OrvFileAcclaimAsf.h"
#include "orvsdk/host/scene/OrvNode.h"
#include "orvsdk/skeleton/OrvAsfNode.h"
#include "orvsdk/skeleton/OrvAsfScene.h"
#include "python/src/LoadedScene.h"

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>
#include <pybind11/stl/filesystem.h>

#include <limits>
#include <optional>

namespace py = pybind11;

namespace orvasf::python {

namespace {

using SharedScene = std::shared_ptr<const LoadedScene>;

constexpr double kInf = std::numeric_limits<double>::infinity();

py::list MessageList(const std::vector<orvsdk::OrvMessage>& pMessages)
{
    py::list lList;
    for (const orvsdk::OrvMessage& lMessage : pMessages)
        lList.append(py::make_tuple(lMessage.mKind == orvsdk::OrvMessage::eError ? "error" : "warning", lMessage.mFile,
                                    lMessage.mLine, lMessage.mText, orvsdk::OrvFormatMessage(lMessage)));
    return lList;
}

// A new C-ordered float64 array of pShape, filled by pFill(data) without the GIL.
template <typename TFill>
py::array_t<double> FilledArray(std::vector<py::ssize_t> pShape, TFill pFill)
{
    py::array_t<double> lArray(pShape);
    double* lData = lArray.mutable_data();
    {
        py::gil_scoped_release lRelease;
        pFill(lData);
    }
    return lArray;
}

// Runs pWrite(messages) without the GIL; raises OSError with the last message when it fails.
template <typename TWrite>
void WriteFiles(const std::string& pPath, TWrite pWrite)
{
    std::vector<orvsdk::OrvMessage> lMessages;
    bool lWritten = false;
    {
        py::gil_scoped_release lRelease;
        lWritten = pWrite(lMessages);
    }
    if (lWritten) return;
    const std::string lText = lMessages.empty() ? pPath + ": not written" : orvsdk::OrvFormatMessage(lMessages.back());
    PyErr_SetString(PyExc_OSError, lText.c_str());
    throw py::error_already_set();
}

// --- Skeleton ------------------------------------------------------------------------------

class Skeleton
{
public:
    explicit Skeleton(SharedScene pScene) : mScene(std::move(pScene)) {}

    const SharedScene& GetScene() const { return mScene; }

    std::string GetName() const { return mScene->GetImport().mScene->GetName(); }
    std::string GetPath() const { return mScene->GetSkeletonPath(); }

    py::object GetUnits() const
    {
        const orvsdk::OrvAsfScene* lAsf = mScene->GetImport().mSkeleton.get();
        if (!lAsf) return py::none();
        py::dict lUnits;
        lUnits["mass"] = lAsf->mMassUnit;
        lUnits["length"] = lAsf->mLengthUnit;
        lUnits["angle"] = lAsf->mAngleUnit;
        return std::move(lUnits);
    }

    std::vector<std::string> GetJointNames() const
    {
        std::vector<std::string> lNames;
        for (const orvsdk::OrvNode* lNode : mScene->GetPose().GetNodes()) lNames.emplace_back(lNode->GetName());
        return lNames;
    }

    py::array_t<int64_t> GetParents() const
    {
        const std::vector<int>& lParents = mScene->GetPose().GetParents();
        py::array_t<int64_t> lArray(static_cast<py::ssize_t>(lParents.size()));
        std::copy(lParents.begin(), lParents.end(), lArray.mutable_data());
        return lArray;
    }

    py::array_t<double> GetOffsets() const
    {
        return FilledArray({mScene->GetJointCount(), 3}, [this](double* pOut) { mScene->FillRestOffsets(pOut); });
    }

    std::vector<std::string> GetRotationOrders() const
    {
        std::vector<std::string> lOrders;
        for (int i = 0; i < mScene->GetJointCount(); ++i) lOrders.push_back(mScene->GetRotationOrder(i));
        return lOrders;
    }

    // Per ASF bone, in file order of its DOF list: the DOF names, or the (min, max) limits.
    py::dict GetDofs() const
    {
        return PerBone([](const orvsdk::OrvAsfNode&, int pCode) -> py::object {
            return py::str(orvsdk::OrvFileAcclaimAsf::smDof[pCode].keyword);
        });
    }

    py::dict GetLimits() const
    {
        return PerBone([](const orvsdk::OrvAsfNode& pBone, int pCode) -> py::object {
            return py::make_tuple(pBone.mLimitMinActive[pCode] ? pBone.mLimitMin[pCode] : -kInf,
                                  pBone.mLimitMaxActive[pCode] ? pBone.mLimitMax[pCode] : kInf);
        });
    }

    // The skeleton's rest pose as an ASF file. An ASF skeleton is exported from a skeleton-only
    // import of its file, so that no frame of a motion enters its rest pose.
    void ToAsf(const std::filesystem::path& pFile) const
    {
        const std::string lPath = pFile.string();
        WriteFiles(lPath, [&](auto& pMessages) {
            const FrameSelection kRestPose{0, 1, 1};
            if (!mScene->GetImport().mHasMotion || mScene->GetSkeletonPath().empty())
                return mScene->WriteAsfAmc(lPath, std::string(), kRestPose, pMessages);
            const OrvImportResult lRest = OrvImportAsf(mScene->GetSkeletonPath(), std::string(), OrvImportSettings());
            pMessages.insert(pMessages.end(), lRest.mMessages.begin(), lRest.mMessages.end());
            return lRest.mSucceeded && OrvWriteAsfAmc(lPath, std::string(), lRest, OrvAllFrames(lRest), pMessages);
        });
    }

private:
    template <typename TEntry>
    py::dict PerBone(TEntry pEntry) const
    {
        py::dict lBones;
        orvsdk::OrvAsfScene* lAsf = mScene->GetImport().mSkeleton.get();
        if (!lAsf || !lAsf->mRoot) return lBones;
        lAsf->mRoot->VisitPreOrder([&](orvsdk::OrvAsfNode* pBone) {
            py::tuple lEntries(pBone->mDofCount);
            for (int i = 0; i < pBone->mDofCount; ++i) lEntries[i] = pEntry(*pBone, pBone->mDof[i]);
            lBones[py::str(pBone->mName)] = lEntries;
            return false;
        });
        return lBones;
    }

    SharedScene mScene;
};

// --- Motion --------------------------------------------------------------------------------

class Motion
{
public:
    Motion(SharedScene pScene, FrameSelection pFrames) : mScene(std::move(pScene)), mFrames(pFrames) {}

    double GetFramesPerSecond() const { return mScene->GetFramesPerSecond() / static_cast<double>(mFrames.mStep); }
    int64_t GetFrameCount() const { return mFrames.mCount; }
    Skeleton GetSkeleton() const { return Skeleton(mScene); }

    py::array_t<double> GetTimes() const
    {
        return FilledArray({mFrames.mCount}, [this](double* pOut) {
            for (int64_t i = 0; i < mFrames.mCount; ++i)
                pOut[i] = orvsdk::OrvTime::FromFrame(mFrames.FrameAt(i), mScene->GetFramesPerSecond()).GetSecondDouble();
        });
    }

    py::array_t<double> Positions(const std::string& pUnit, std::optional<double> pFps) const
    {
        const double lScale = CentimetresTo(pUnit);
        if (pFps && (!(*pFps > 0.0) || !std::isfinite(*pFps)))
            throw py::value_error("fps must be a finite number above 0");
        const std::vector<orvsdk::OrvTime> lTimes =
            pFps ? mScene->ResampledTimes(mFrames, *pFps) : mScene->TimesOf(mFrames);
        return FilledArray({static_cast<py::ssize_t>(lTimes.size()), mScene->GetJointCount(), 3},
                           [&](double* pOut) { mScene->FillPositions(lTimes, lScale, pOut); });
    }

    py::tuple Channels() const
    {
        const std::vector<std::string> lNames = mScene->GetChannelNames();
        py::array_t<double> lValues = FilledArray({mFrames.mCount, static_cast<py::ssize_t>(lNames.size())},
                                                  [&](double* pOut) { mScene->FillChannels(mFrames, pOut); });
        return py::make_tuple(py::cast(lNames), lValues);
    }

    py::array_t<double> GlobalTransforms() const
    {
        return FilledArray({mFrames.mCount, mScene->GetJointCount(), 4, 4},
                           [&](double* pOut) { mScene->FillGlobalTransforms(mFrames, pOut); });
    }

    py::array_t<double> LocalRotations(const std::string& pKind) const
    {
        std::vector<py::ssize_t> lShape{mFrames.mCount, mScene->GetJointCount()};
        RotationKind lKind = RotationKind::eEuler;
        if (pKind == "euler")
            lShape.push_back(3);
        else if (pKind == "quat")
            lKind = RotationKind::eQuat, lShape.push_back(4);
        else if (pKind == "matrix")
            lKind = RotationKind::eMatrix, lShape.insert(lShape.end(), {3, 3});
        else
            throw py::value_error("kind must be \"euler\", \"quat\" or \"matrix\", not \"" + pKind + "\"");
        return FilledArray(lShape, [&](double* pOut) { mScene->FillLocalRotations(mFrames, lKind, pOut); });
    }

    // The frames pSlice picks, as a view on the same scene.
    Motion Slice(const py::slice& pSlice) const
    {
        py::ssize_t lStart = 0, lStop = 0, lStep = 0, lLength = 0;
        if (!pSlice.compute(static_cast<py::ssize_t>(mFrames.mCount), &lStart, &lStop, &lStep, &lLength))
            throw py::error_already_set();
        if (lStep < 0) throw py::value_error("a Motion's frames cannot be reversed: the slice step must be positive");
        return Motion(mScene, {mFrames.mFirst + lStart * mFrames.mStep, mFrames.mStep * lStep, lLength});
    }

    Motion Frame(int64_t pIndex) const
    {
        const int64_t lIndex = pIndex < 0 ? pIndex + mFrames.mCount : pIndex;
        if (lIndex < 0 || lIndex >= mFrames.mCount)
            throw py::index_error("frame " + std::to_string(pIndex) + " is outside the motion's " +
                                  std::to_string(mFrames.mCount) + " frames");
        return Motion(mScene, {mFrames.FrameAt(lIndex), 1, 1});
    }

    void ToBvh(const std::filesystem::path& pFile) const
    {
        RefuseEmpty();
        const std::string lPath = pFile.string();
        WriteFiles(lPath, [&](auto& pMessages) { return mScene->WriteBvh(lPath, mFrames, pMessages); });
    }

    void ToAmc(const std::filesystem::path& pFile, std::optional<std::filesystem::path> pSkeletonFile) const
    {
        RefuseEmpty();
        const std::string lAmcPath = pFile.string();
        const std::string lAsfPath =
            pSkeletonFile ? pSkeletonFile->string() : std::filesystem::path(pFile).replace_extension(".asf").string();
        if (lAsfPath == lAmcPath) throw py::value_error("the AMC file and its skeleton need two paths: " + lAmcPath);
        WriteFiles(lAmcPath,
                   [&](auto& pMessages) { return mScene->WriteAsfAmc(lAsfPath, lAmcPath, mFrames, pMessages); });
    }

private:
    void RefuseEmpty() const
    {
        if (mFrames.mCount == 0) throw py::value_error("a Motion without frames cannot be written");
    }

    static double CentimetresTo(const std::string& pUnit)
    {
        if (pUnit == "cm") return 1.0;
        if (pUnit == "mm") return 10.0;
        if (pUnit == "m") return 0.01;
        if (pUnit == "in") return 1.0 / 2.54;
        throw py::value_error("unit must be \"cm\", \"mm\", \"m\" or \"in\", not \"" + pUnit + "\"");
    }

    SharedScene mScene;
    FrameSelection mFrames;
};

// --- Reading -------------------------------------------------------------------------------

// The import of pRun, run without the GIL, as (Motion or None, messages).
template <typename TRun>
py::tuple Import(const std::string& pSkeletonPath, const std::string& pMotionPath, TRun pRun)
{
    OrvImportResult lImport;
    {
        py::gil_scoped_release lRelease;
        lImport = pRun();
    }
    py::list lMessages = MessageList(lImport.mMessages);
    if (!lImport.mSucceeded) return py::make_tuple(py::none(), lMessages);
    auto lScene = std::make_shared<const LoadedScene>(std::move(lImport), pSkeletonPath, pMotionPath);
    const FrameSelection lAll{0, 1, lScene->GetFrameCount()};
    return py::make_tuple(Motion(std::move(lScene), lAll), lMessages);
}

OrvRotationFilter FilterNamed(const std::string& pName)
{
    if (pName == "none") return OrvRotationFilter::eNone;
    if (pName == "gimbal") return OrvRotationFilter::eGimbalKiller;
    if (pName == "unroll") return OrvRotationFilter::eUnroll;
    throw py::value_error("rotation_filter must be \"none\", \"gimbal\" or \"unroll\", not \"" + pName + "\"");
}

py::tuple ImportAsf(const std::string& pAsf, const std::string& pAmc, double pFps, bool pRemoveDummy,
                    bool pRotationOffset, bool pPreRotation, bool pLimits, const std::string& pRotationFilter,
                    bool pReduceKeys, const std::string& pTake, int pThreads)
{
    if (!(pFps > 0.0) || !std::isfinite(pFps)) throw py::value_error("fps must be a finite number above 0");
    if (pThreads < 0) throw py::value_error("threads must be 0 (one per core) or more");
    OrvImportSettings lSettings;
    lSettings.mFramesPerSecond = pFps;
    lSettings.mRemoveDummy = pRemoveDummy;
    lSettings.mUseRotationOffset = pRotationOffset;
    lSettings.mUsePreRotation = pPreRotation;
    lSettings.mUseLimits = pLimits;
    lSettings.mRotationFilter = FilterNamed(pRotationFilter);
    lSettings.mReduceKeys = pReduceKeys;
    lSettings.mTakeName = pTake;
    lSettings.mThreads = pThreads;
    return Import(pAsf, pAmc, [&] { return OrvImportAsf(pAsf, pAmc, lSettings); });
}

py::tuple ImportBvh(const std::string& pPath, const std::string& pTake)
{
    OrvImportSettings lSettings;
    lSettings.mTakeName = pTake;
    return Import(std::string(), std::string(), [&] { return OrvImportBvh(pPath, lSettings); });
}

} // namespace

} // namespace orvasf::python

PYBIND11_MODULE(_orvasf, pModule)
{
    using namespace orvasf::python;
    pModule.doc() = "Compiled core of orvasf; use the orvasf package.";
    pModule.attr("__version__") = ORVASF_VERSION;

    // The classes present themselves as members of the package, where users find them.
    py::class_<Skeleton>(pModule, "Skeleton",
                         "A skeleton's joints: its bones and end nodes as host nodes, a node before its children.")
        .def_property_readonly("name", &Skeleton::GetName, "The skeleton's name (\"BVH\" for a BVH file).")
        .def_property_readonly("path", &Skeleton::GetPath, "The ASF file it was read from; empty for BVH.")
        .def_property_readonly("units", &Skeleton::GetUnits,
                               "dict of the ASF units section: mass, length and angle factors (angle: "
                               "degrees per file unit); None for BVH.")
        .def_property_readonly("joint_names", &Skeleton::GetJointNames,
                               "Names of the joints (bones and end nodes), in the order of every per-joint array.")
        .def_property_readonly("parents", &Skeleton::GetParents,
                               "int64 array: each joint's parent index, -1 for the root.")
        .def_property_readonly("offsets", &Skeleton::GetOffsets,
                               "float64 array (joints, 3): each joint's rest position minus its parent's, in "
                               "world axes and centimetres; the root's rest position.")
        .def_property_readonly("rotation_orders", &Skeleton::GetRotationOrders,
                               "Each joint's rotation order as axis letters, the first applied first (\"XYZ\").")
        .def_property_readonly("dofs", &Skeleton::GetDofs,
                               "dict bone name -> tuple of DOF names (\"tx\", \"rx\", ...) as the ASF file lists "
                               "them; empty for BVH.")
        .def_property_readonly("limits", &Skeleton::GetLimits,
                               "dict bone name -> tuple of (min, max) per DOF, as the ASF file gives them, "
                               "-inf/inf where open; empty for BVH.")
        .def("to_asf", &Skeleton::ToAsf, py::arg("path"),
             "Writes the skeleton's rest pose as an ASF file (length unit 1, one bone per joint, end nodes\n"
             "left out). The file is replaced only once wholly written; OSError when it cannot be.")
        .def("__len__", [](const Skeleton& pSkeleton) { return pSkeleton.GetScene()->GetJointCount(); })
        .def("__repr__", [](const Skeleton& pSkeleton) {
            return "<orvasf.Skeleton \"" + pSkeleton.GetName() + "\", " +
                   std::to_string(pSkeleton.GetScene()->GetJointCount()) + " joints>";
        })
        .attr("__module__") = "orvasf";

    py::class_<Motion>(pModule, "Motion", "Frames of motion on a skeleton; slicing gives views that share the data.")
        .def_property_readonly("fps", &Motion::GetFramesPerSecond, "Frames per second of this view's frames.")
        .def_property_readonly("frame_count", &Motion::GetFrameCount, "Number of frames.")
        .def_property_readonly("times", &Motion::GetTimes, "float64 array: each frame's time in seconds.")
        .def_property_readonly("skeleton", &Motion::GetSkeleton, "The Skeleton the motion moves.")
        .def("positions", &Motion::Positions, py::arg("unit") = "cm", py::arg("fps") = py::none(),
             "World position of every joint at every frame: float64 array (frames, joints, 3).\n"
             "unit: \"cm\" (default), \"mm\", \"m\" or \"in\".\n"
             "fps: evaluate at this frame rate instead, from the first frame's time to the last one's\n"
             "(frames between keys interpolated as the curves interpolate, as batch --resample does).")
        .def("channels", &Motion::Channels,
             "(names, values): the motion's channels as its file writes them. names lists \"bone.dof\" "
             "for every DOF of every bone of an AMC motion (skeleton order; values as written, before any "
             "unit conversion; NaN where a frame or a bone line is missing) or \"joint.Xrotation\" and "
             "the like for a BVH file; values is a float64 array (frames x channels).")
        .def("global_transforms", &Motion::GlobalTransforms,
             "World transform of every joint at every frame: float64 array (frames, joints, 4, 4), "
             "column vectors, translation in centimetres in the last column.")
        .def("local_rotations", &Motion::LocalRotations, py::arg("kind") = "euler",
             "Rotation of every joint relative to its parent, at every frame.\n"
             "kind=\"euler\": (frames, joints, 3) degrees about X, Y, Z, composed in the joint's rotation order;\n"
             "kind=\"quat\": (frames, joints, 4) unit quaternions w, x, y, z with w >= 0;\n"
             "kind=\"matrix\": (frames, joints, 3, 3).")
        .def("to_bvh", &Motion::ToBvh, py::arg("path"),
             "Writes the frames as a BVH file (root with six channels, three rotation channels per joint in its\n"
             "rotation order, End Sites from the end nodes). The file is replaced only once wholly written;\n"
             "OSError when it cannot be.")
        .def("to_amc", &Motion::ToAmc, py::arg("path"), py::arg("asf") = py::none(),
             "Writes the frames as an AMC file and, at asf (default: path with \".asf\"), the skeleton it\n"
             "moves; read back together they give the same world positions. OSError when a file cannot be\n"
             "written (an existing one is then untouched).")
        .def("__len__", &Motion::GetFrameCount)
        .def("__getitem__", &Motion::Slice, py::arg("frames"))
        .def("__getitem__", &Motion::Frame, py::arg("frame"))
        .def("__repr__", [](const Motion& pMotion) {
            return "<orvasf.Motion " + std::to_string(pMotion.GetFrameCount()) + " frames at " +
                   std::to_string(pMotion.GetFramesPerSecond()) + " fps>";
        })
        .attr("__module__") = "orvasf";

    pModule.def("_import_asf", &ImportAsf, py::arg("asf"), py::arg("amc"), py::arg("fps"), py::arg("remove_dummy"),
                py::arg("rotation_offset"), py::arg("pre_rotation"), py::arg("limits"), py::arg("rotation_filter"),
                py::arg("reduce_keys"), py::arg("take"), py::arg("threads"));
    pModule.def("_import_bvh", &ImportBvh, py::arg("path"), py::arg("take"));
}
