#include "tools/orvasf/MessagePrinter.h"

#include "orvsdk/host/io/OrvTextFile.h"

#include <cstdio>

namespace orvasf::tool {

void PrintMessages(const orvsdk::OrvTextFile& pFile)
{
    for (const orvsdk::OrvTextFileMessage& lMessage : pFile.GetMessages())
        std::fprintf(stderr, "%s\n", pFile.FormatMessage(lMessage).c_str());
}

void PrintMessages(const OrvAmcReader& pReader, const std::vector<OrvAmcMessage>& pMessages)
{
    for (const OrvAmcMessage& lMessage : pMessages) std::fprintf(stderr, "%s\n", pReader.FormatMessage(lMessage).c_str());
}

void PrintToolError(const std::string& pText)
{
    std::fprintf(stderr, "orvasf: error: %s\n", pText.c_str());
}

} // namespace orvasf::tool
