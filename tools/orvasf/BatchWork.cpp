#include "tools/orvasf/BatchWork.h"

#include "tools/orvasf/ArgumentValues.h"

#include <algorithm>
#include <map>
#include <set>

namespace orvasf::tool {

namespace fs = std::filesystem;

namespace {

// The motion, skeleton and BVH files of one folder.
struct FolderFiles
{
    std::vector<fs::path> mAmc;
    std::vector<fs::path> mAsf;
    std::vector<fs::path> mBvh;
};

std::map<fs::path, FolderFiles> FilesByFolder(const fs::path& pInputFolder, const fs::path& pOutputFolder)
{
    std::map<fs::path, FolderFiles> lFolders;
    const fs::path lSkipped = fs::weakly_canonical(pOutputFolder);
    for (auto lEntry = fs::recursive_directory_iterator(pInputFolder); lEntry != fs::recursive_directory_iterator();
         ++lEntry)
    {
        if (lEntry->is_directory() && fs::weakly_canonical(lEntry->path()) == lSkipped)
            lEntry.disable_recursion_pending();
        if (!lEntry->is_regular_file()) continue;
        const std::string lExtension = LowerCaseExtension(lEntry->path().string());
        FolderFiles& lFolder = lFolders[lEntry->path().parent_path()];
        if (lExtension == ".amc") lFolder.mAmc.push_back(lEntry->path());
        if (lExtension == ".asf") lFolder.mAsf.push_back(lEntry->path());
        if (lExtension == ".bvh") lFolder.mBvh.push_back(lEntry->path());
    }
    return lFolders;
}

// Gives pItem the ASF of pSkeletons that goes with its motion, or the problem of finding one.
void PairSkeleton(BatchItem& pItem, const std::vector<fs::path>& pSkeletons)
{
    if (pSkeletons.size() == 1)
    {
        pItem.mSkeleton = pSkeletons.front();
        return;
    }
    const std::string lMotionName = pItem.mMotion.stem().string();
    std::vector<fs::path> lFitting;
    for (const fs::path& lSkeleton : pSkeletons)
        if (lMotionName.rfind(lSkeleton.stem().string(), 0) == 0) lFitting.push_back(lSkeleton);
    if (lFitting.size() == 1)
        pItem.mSkeleton = lFitting.front();
    else if (pSkeletons.empty())
        pItem.mProblem = "no ASF skeleton in the motion's folder";
    else
        pItem.mProblem = std::to_string(pSkeletons.size()) + " ASF skeletons in the motion's folder and " +
                         (lFitting.empty() ? "none" : std::to_string(lFitting.size())) +
                         " whose name the motion's name starts with";
}

} // namespace

std::vector<BatchItem> FindBatchWork(const fs::path& pInputFolder, const fs::path& pOutputFolder,
                                     const std::string& pExtension)
{
    std::vector<BatchItem> lItems;
    for (auto& [lFolder, lFiles] : FilesByFolder(pInputFolder, pOutputFolder))
    {
        std::sort(lFiles.mAsf.begin(), lFiles.mAsf.end());
        for (const fs::path& lMotion : lFiles.mAmc)
        {
            BatchItem lItem;
            lItem.mMotion = lMotion;
            PairSkeleton(lItem, lFiles.mAsf);
            lItems.push_back(lItem);
        }
        for (const fs::path& lBvh : lFiles.mBvh) lItems.push_back(BatchItem{lBvh, {}, {}, {}});
    }
    const auto lInput = [](const BatchItem& pItem) { return pItem.mMotion.empty() ? pItem.mSkeleton : pItem.mMotion; };
    std::sort(lItems.begin(), lItems.end(),
              [&lInput](const BatchItem& pLeft, const BatchItem& pRight) { return lInput(pLeft) < lInput(pRight); });
    std::set<fs::path> lTaken;
    for (BatchItem& lItem : lItems)
    {
        lItem.mOutput = pOutputFolder / lInput(lItem).lexically_relative(pInputFolder).replace_extension(pExtension);
        if (!lTaken.insert(lItem.mOutput).second && lItem.mProblem.empty())
            lItem.mProblem = "another input of the folder has the same name, and so the same output";
    }
    return lItems;
}

} // namespace orvasf::tool
