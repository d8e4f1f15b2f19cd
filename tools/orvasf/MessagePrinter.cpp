#include "tools/orvasf/MessagePrinter.h"

#include <cstdio>

namespace orvasf::tool {

void PrintMessages(const std::vector<orvsdk::OrvMessage>& pMessages)
{
    for (const orvsdk::OrvMessage& lMessage : pMessages)
        std::fprintf(stderr, "%s\n", orvsdk::OrvFormatMessage(lMessage).c_str());
}

void PrintToolError(const std::string& pText)
{
    std::fprintf(stderr, "orvasf: error: %s\n", pText.c_str());
}

} // namespace orvasf::tool
