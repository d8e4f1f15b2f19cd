#include "tools/orvasf/OutputText.h"

#include "tools/orvasf/MessagePrinter.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace orvasf::tool {

OutputText::OutputText(const char* pFileType) : mFile(pFileType, " ", "#", false, false) {}

bool OutputText::Open(const std::string& pPath)
{
    mToFile = !pPath.empty();
    if (!mToFile || mFile.Create(pPath.c_str())) return true;
    PrintMessages(mFile.GetMessages());
    return false;
}

bool OutputText::Write(std::string_view pText)
{
    if (!mToFile) return std::fwrite(pText.data(), 1, pText.size(), stdout) == pText.size();
    return mFile.Write(pText.data(), pText.size());
}

bool OutputText::Close()
{
    if (!mToFile) return FlushStandardOutput();
    if (mFile.Close()) return true;
    PrintMessages(mFile.GetMessages());
    return false;
}

bool FlushStandardOutput()
{
    if (std::fflush(stdout) == 0 && !std::ferror(stdout)) return true;
    std::fprintf(stderr, "<stdout>: error: Can't write standard output: %s\n", std::strerror(errno));
    return false;
}

} // namespace orvasf::tool
