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
    // The printf precision is an int: long texts go out in pieces.
    constexpr size_t kPieceSize = 1 << 30;
    bool lWritten = true;
    for (size_t lDone = 0; lDone < pText.size() && lWritten; lDone += kPieceSize)
    {
        const std::string_view lPiece = pText.substr(lDone, kPieceSize);
        lWritten = mFile.Print(0, "%.*s", static_cast<int>(lPiece.size()), lPiece.data());
    }
    return lWritten;
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
