// Files and texts the tests write and read back: scratch paths that concurrent test processes do
// not share, whole-file reading, and small text edits.
#ifndef ORVASF_TESTS_SUPPORT_SCRATCHFILES_H
#define ORVASF_TESTS_SUPPORT_SCRATCHFILES_H

#include <gtest/gtest.h>

#include <sys/resource.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace testfiles {

// pName in the test temporary folder, prefixed with this process's id.
inline std::string ScratchPath(const std::string& pName)
{
    return ::testing::TempDir() + "orv_" + std::to_string(::getpid()) + "_" + pName;
}

// The bytes of the file; empty when it cannot be read.
inline std::string ReadFile(const std::filesystem::path& pPath)
{
    std::ifstream lStream(pPath, std::ios::binary);
    std::ostringstream lText;
    lText << lStream.rdbuf();
    return lText.str();
}

// The lines of pText, without their line ends.
inline std::vector<std::string> Lines(const std::string& pText)
{
    std::vector<std::string> lLines;
    std::istringstream lStream(pText);
    for (std::string lLine; std::getline(lStream, lLine);) lLines.push_back(lLine);
    return lLines;
}

// pText with its first pFrom replaced by pTo.
inline std::string Replace(std::string pText, const std::string& pFrom, const std::string& pTo)
{
    const size_t lAt = pText.find(pFrom);
    EXPECT_NE(lAt, std::string::npos) << pFrom;
    return lAt == std::string::npos ? pText : pText.replace(lAt, pFrom.size(), pTo);
}

// Runs pWrite while no file may grow beyond pBytes, the signal that would end the process being
// ignored, then restores both; false when the limit could not be set (pWrite then did not run).
template <typename Write>
bool WithFileSizeLimit(rlim_t pBytes, Write pWrite)
{
    rlimit lOldLimit;
    if (getrlimit(RLIMIT_FSIZE, &lOldLimit) != 0) return false;
    rlimit lLimit = lOldLimit;
    lLimit.rlim_cur = pBytes;
    void (*lOldHandler)(int) = std::signal(SIGXFSZ, SIG_IGN);
    const bool lLimited = setrlimit(RLIMIT_FSIZE, &lLimit) == 0;
    if (lLimited) pWrite();
    setrlimit(RLIMIT_FSIZE, &lOldLimit);
    std::signal(SIGXFSZ, lOldHandler);
    return lLimited;
}

} // namespace testfiles

#endif
