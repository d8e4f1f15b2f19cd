// Runs the built orvasf tool as a process in a scratch folder of its own and captures what it
// prints; shared by the command-line test suites.
#ifndef ORVASF_TESTS_SUPPORT_TOOLRUNNER_H
#define ORVASF_TESTS_SUPPORT_TOOLRUNNER_H

#include "ScratchFiles.h"

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace tool_support {

namespace fs = std::filesystem;

inline const std::string kSampleAsf = std::string(ORV_SOURCE_DIR) + "/examples/walker.asf";
inline const std::string kSampleAmc = std::string(ORV_SOURCE_DIR) + "/examples/walker.amc";

struct ToolRun
{
    int mStatus;
    std::string mOut;
    std::string mErr;
};

using testfiles::Lines;
using testfiles::ReadFile;
using testfiles::Replace;

inline void WriteFile(const fs::path& pPath, const std::string& pText)
{
    std::ofstream(pPath, std::ios::binary) << pText;
}

inline std::string Quoted(const std::string& pText)
{
    return "'" + pText + "'";
}

// The rows "frame,joint,x,y,z" of the pose command's output (after its title line), by frame
// and joint.
using PoseTable = std::map<std::pair<int, std::string>, std::vector<double>>;

inline PoseTable PoseRows(const std::string& pCsv)
{
    PoseTable lRows;
    const std::vector<std::string> lLines = Lines(pCsv);
    for (size_t i = 1; i < lLines.size(); ++i)
    {
        std::string lLine = lLines[i];
        std::replace(lLine.begin(), lLine.end(), ',', ' ');
        std::istringstream lFields(lLine);
        int lFrame = 0;
        std::string lJoint;
        lFields >> lFrame >> lJoint;
        std::vector<double>& lPosition = lRows[{lFrame, lJoint}];
        for (double lValue = 0.0; lFields >> lValue;) lPosition.push_back(lValue);
    }
    return lRows;
}

// Expects every row of pExpected in pActual, each coordinate within pTolerance.
inline void ExpectSamePoses(const PoseTable& pExpected, const PoseTable& pActual, double pTolerance)
{
    for (const auto& [lKey, lPosition] : pExpected)
    {
        const auto lFound = pActual.find(lKey);
        ASSERT_NE(lFound, pActual.end()) << "no row for " << lKey.second << " at frame " << lKey.first;
        ASSERT_EQ(lFound->second.size(), lPosition.size()) << lKey.second << " at frame " << lKey.first;
        for (size_t i = 0; i < lPosition.size(); ++i)
            EXPECT_NEAR(lFound->second[i], lPosition[i], pTolerance) << lKey.second << " at frame " << lKey.first;
    }
}

// Every test runs in a folder of its own, which holds the tool's captured output too.
class ToolTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        const ::testing::TestInfo* lInfo = ::testing::UnitTest::GetInstance()->current_test_info();
        mFolder = fs::temp_directory_path() / ("orvasf_tool_" + std::string(lInfo->name()) + "_" +
                                               std::to_string(::getpid()));
        fs::remove_all(mFolder);
        fs::create_directories(mFolder / "work");
    }
    void TearDown() override { fs::remove_all(mFolder); }

    // Runs the tool with pArguments (already quoted for the shell) and captures both streams.
    ToolRun Run(const std::string& pArguments) const
    {
        const fs::path lOut = mFolder / "stdout.txt";
        const fs::path lErr = mFolder / "stderr.txt";
        const std::string lCommand = Quoted(ORV_TOOL_PATH) + " " + pArguments + " >" + Quoted(lOut.string()) + " 2>" +
                                     Quoted(lErr.string());
        const int lRaw = std::system(lCommand.c_str());
        return {WIFEXITED(lRaw) ? WEXITSTATUS(lRaw) : -1, ReadFile(lOut), ReadFile(lErr)};
    }

    // A path in the folder the tool writes to, quoted for the shell.
    std::string Work(const std::string& pName) const { return Quoted((mFolder / "work" / pName).string()); }
    fs::path WorkPath(const std::string& pName) const { return mFolder / "work" / pName; }

    std::vector<std::string> WorkFolderEntries() const
    {
        std::vector<std::string> lNames;
        for (const auto& lEntry : fs::directory_iterator(mFolder / "work")) lNames.push_back(lEntry.path().filename());
        std::sort(lNames.begin(), lNames.end());
        return lNames;
    }

    fs::path mFolder;
};

} // namespace tool_support

#endif
