#include "orvsdk/host/core/OrvString.h"

#include <cstdarg>
#include <cstdio>

namespace orvsdk {

OrvString operator+(const OrvString& pLeft, const char* pRight)
{
    std::string lText(pLeft.Buffer(), pLeft.GetLen());
    if (pRight) lText += pRight;
    return OrvString(std::move(lText));
}

int ORVSDK_sprintf(char* pBuffer, size_t pSize, const char* pFormat, ...)
{
    va_list lArgs;
    va_start(lArgs, pFormat);
    const int lLength = std::vsnprintf(pBuffer, pSize, pFormat, lArgs);
    va_end(lArgs);
    if (pSize > 0 && lLength < 0) pBuffer[0] = '\0';
    return lLength;
}

} // namespace orvsdk
