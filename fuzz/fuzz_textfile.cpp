// The text file's line walking, keyword tables and typed reads on arbitrary lines. The input's
// last byte chooses whether empty lines are skipped, the one before it the length of an
// operation script (0 to 63 bytes) that precedes it; the rest, at the front, is the text. Each
// line gets the script's next operations, in turn, until its tokens run out. Every operation
// checks what the text file promises: a failed read leaves its target and the current token
// alone, numbers are never NaN, strings stay within their limit, Check consumes nothing, Handle
// counts its matches, tokens hold no delimiter.

#include "FuzzSupport.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string>

namespace {

using orvsdk::OrvFileAcclaimAsf;
using orvsdk::OrvTextFile;
using orvsdk::TextToken;

using orvfuzz::Require;

const int kMaxOperations = 512;
const int kMaxOperationsPerLine = 16;
const int kLargeLimit = 1024;
const unsigned char kCanary = 0xA5;
const size_t kCanaryBytes = 16;

enum EOperation
{
    eGetDouble,
    eGetInteger,
    eGetVector,
    eGetPair,
    eGetSmallString,
    eGetLargeString,
    eCheck,
    eHandle,
    eInitTokens,
    eNextLine,
    eFirstLine,
    eWarning,
    eOperationCount
};

// Two tables: the section keywords, whose ":" entry catches any other ':' word, and the DOF names.
const TextToken* TableFor(unsigned pByte)
{
    return (pByte & 0x10) ? OrvFileAcclaimAsf::smMain : OrvFileAcclaimAsf::smDof;
}

bool HoldsDelimiter(const char* pToken)
{
    return std::strpbrk(pToken, OrvFileAcclaimAsf::smDel) != nullptr;
}

class Driver
{
public:
    explicit Driver(bool pSkipEmptyLines) : mFile("FUZZ", OrvFileAcclaimAsf::smDel, "#", pSkipEmptyLines, false) {}

    void Run(const std::string& pText, const std::vector<uint8_t>& pScript)
    {
        Require(mFile.Open(pText.data(), pText.size(), "fuzz.txt"), "in-memory open failed");
        if (pScript.empty()) return;
        bool lMore = mFile.FirstLine();
        size_t lNext = 0;
        while (lMore && mOperations < kMaxOperations)
        {
            for (int i = 0; i < kMaxOperationsPerLine && *mFile.mCurrentToken != '\0' && lMore; ++i)
                lMore = Apply(pScript[lNext++ % pScript.size()]);
            if (lMore) lMore = mFile.NextLine();
        }
        for (const orvsdk::OrvMessage& lMessage : mFile.GetMessages())
            Require(!orvsdk::OrvFormatMessage(lMessage).empty(), "empty message");
    }

private:
    // One operation on the current line; false when it ended line walking.
    bool Apply(uint8_t pByte)
    {
        ++mOperations;
        Require(!HoldsDelimiter(mFile.mCurrentToken), "token holds a delimiter");
        const char* const lToken = mFile.mCurrentToken;
        const double lScale = (pByte & 0x80) ? 2.54 : 1.0;
        switch (pByte % eOperationCount)
        {
        case eGetDouble: ReadNumbers(1, lScale, lToken); break;
        case eGetInteger: ReadInteger(lToken); break;
        case eGetVector: ReadNumbers(3, lScale, lToken); break;
        case eGetPair: ReadNumbers(2, lScale, lToken); break;
        case eGetSmallString: ReadString(1 + (pByte >> 4), lToken); break;
        case eGetLargeString: ReadString(kLargeLimit, lToken); break;
        case eCheck:
            mFile.Check(TableFor(pByte));
            Require(mFile.mCurrentToken == lToken, "Check consumed a token");
            break;
        case eHandle: HandleToken(TableFor(pByte), lToken); break;
        case eInitTokens:
            mFile.InitTokens(TableFor(pByte));
            Require(mFile.GetTokenCount(TableFor(pByte), 0) == 0, "InitTokens left a count");
            break;
        case eNextLine: return NextLine();
        case eFirstLine: return mFile.FirstLine();
        case eWarning: mFile.Warning("Token (%s)\n", lToken); break;
        default: break;
        }
        return true;
    }

    bool NextLine()
    {
        const int lLine = mFile.GetLineNumber();
        const bool lMore = mFile.NextLine();
        Require(lMore ? mFile.GetLineNumber() > lLine : mFile.mEndOfFile, "line walking went wrong");
        return lMore;
    }

    void ReadNumbers(int pCount, double pScale, const char* pToken)
    {
        double lValues[3] = {-7.0, -7.0, -7.0};
        const bool lRead = pCount == 1   ? mFile.GetDouble(lValues[0], pScale)
                           : pCount == 2 ? mFile.GetPair(lValues, pScale)
                                         : mFile.GetVector(lValues, pScale);
        for (int i = 0; i < 3; ++i)
        {
            Require(!std::isnan(lValues[i]), "a number read as NaN");
            if (!lRead || i >= pCount) Require(lValues[i] == -7.0, "a failed or short read changed its target");
        }
        if (!lRead) Require(mFile.mCurrentToken == pToken, "a failed read consumed a token");
    }

    void ReadInteger(const char* pToken)
    {
        int lValue = -7;
        if (mFile.GetInteger(lValue)) return;
        Require(lValue == -7 && mFile.mCurrentToken == pToken, "a failed integer read changed something");
    }

    void ReadString(int pLimit, const char* pToken)
    {
        const size_t lUsed = static_cast<size_t>(pLimit) + kCanaryBytes;
        std::memset(mBuffer, kCanary, lUsed);
        char* lText = reinterpret_cast<char*>(mBuffer);
        const size_t lTokenLength = std::strlen(pToken);
        if (!mFile.GetString(lText, pLimit))
        {
            Require(*pToken == '\0' && mBuffer[0] == kCanary, "GetString failed on a token");
            return;
        }
        const size_t lLength = std::strlen(lText);
        Require(lLength < static_cast<size_t>(pLimit), "GetString went past its limit");
        Require(lLength == std::min(lTokenLength, static_cast<size_t>(pLimit) - 1), "GetString kept the wrong length");
        for (size_t i = static_cast<size_t>(pLimit); i < lUsed; ++i)
            Require(mBuffer[i] == kCanary, "GetString wrote past its buffer");
    }

    void HandleToken(const TextToken* pTable, const char* pToken)
    {
        const int lExpected = mFile.Check(pTable);
        const int lBefore = lExpected >= 0 ? mFile.GetTokenCount(pTable, lExpected) : 0;
        const int lCode = mFile.Handle(pTable);
        Require(lCode == lExpected, "Handle and Check disagree");
        if (lCode < 0)
        {
            Require(mFile.mCurrentToken == pToken, "a failed Handle consumed a token");
            return;
        }
        Require(mFile.GetTokenCount(pTable, lCode) == lBefore + 1, "Handle did not count its match");
    }

    OrvTextFile mFile;
    int mOperations = 0;
    unsigned char mBuffer[kLargeLimit + kCanaryBytes];  // string target, canaries behind the limit
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t pSize)
{
    FuzzedDataProvider lInput(pData, pSize);
    const bool lSkipEmptyLines = lInput.ConsumeBool();
    const size_t lScriptLength = lInput.ConsumeIntegralInRange<size_t>(0, 63);
    std::vector<uint8_t> lScript;
    for (size_t i = 0; i < lScriptLength && lInput.remaining_bytes() > 0; ++i)
        lScript.push_back(lInput.ConsumeIntegral<uint8_t>());
    const std::string lText = lInput.ConsumeRemainingBytesAsString();
    Driver(lSkipEmptyLines).Run(lText, lScript);
    return 0;
}
