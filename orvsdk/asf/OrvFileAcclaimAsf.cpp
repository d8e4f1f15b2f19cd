#include "orvsdk/asf/OrvFileAcclaimAsf.h"

#include "orvsdk/skeleton/OrvAsfNode.h"
#include "orvsdk/skeleton/OrvAsfScene.h"

#include <cmath>
#include <cstring>

namespace orvsdk {

namespace {

// The only version this reader knows, times 100.
const double kVersionTimes100 = 110.0;
const double kDegreesPerRadian = 57.29577951308232;
// Longest name GetString may store, terminator included.
const int kNameLimit = 50;
const int kSkinNameSize = 1024;
const int kMaxSkinNames = 3;

} // namespace

const TextToken OrvFileAcclaimAsf::smMain[] = {
    {":version", 0}, {":name", 0}, {":units", 0}, {":documentation", 0}, {":root", 0},
    {":bonedata", 0}, {":hierarchy", 0}, {":skin", 0}, {":", 0}, {"", 0}};
const TextToken OrvFileAcclaimAsf::smUnits[] = {{"mass", 0}, {"length", 0}, {"angle", 0}, {"", 0}};
const TextToken OrvFileAcclaimAsf::smAngle[] = {{"deg", 0}, {"rad", 0}, {"", 0}};
const TextToken OrvFileAcclaimAsf::smRoot[] = {{"axis", 0}, {"order", 0}, {"position", 0}, {"orientation", 0}, {"", 0}};
const TextToken OrvFileAcclaimAsf::smGroup[] = {{"begin", 0}, {"end", 0}, {"", 0}};
const TextToken OrvFileAcclaimAsf::smBoneData[] = {
    {"id", 0}, {"name", 0}, {"direction", 0}, {"length", 0}, {"axis", 0},
    {"dof", 0}, {"limits", 0}, {"bodymass", 0}, {"cofmass", 0}, {"", 0}};
const TextToken OrvFileAcclaimAsf::smDof[] = {
    {"tx", 0}, {"ty", 0}, {"tz", 0}, {"rz", 0}, {"ry", 0}, {"rx", 0}, {"l", 0}, {"", 0}};
const TextToken OrvFileAcclaimAsf::smOrder[] = {
    {"tx", 0}, {"ty", 0}, {"tz", 0}, {"rz", 0}, {"ry", 0}, {"rx", 0}, {"", 0}};
const TextToken OrvFileAcclaimAsf::smAxis[] = {
    {"zyx", 0}, {"xzy", 0}, {"yxz", 0}, {"yzx", 0}, {"zxy", 0}, {"xyz", 0}, {"", 0}};
const char* const OrvFileAcclaimAsf::smType = "ASF";
const char* const OrvFileAcclaimAsf::smCom = "#";
const char* const OrvFileAcclaimAsf::smDel = " \t, ()\r\n";

OrvFileAcclaimAsf::OrvFileAcclaimAsf(bool pEchoMessages) : OrvTextFile(smType, smDel, smCom, true, pEchoMessages)
{
}

OrvFileAcclaimAsf::~OrvFileAcclaimAsf()
{
    Close();
}

bool OrvFileAcclaimAsf::Read(OrvAsfScene* pScene, bool pRemoveDummy, bool pUseRotationOffset, bool pUsePreRotation)
{
    mAsfScene = pScene;
    ForgetReadState();
    // A scene handed over with bones already (not empty, as it should be) keeps them findable.
    if (pScene->mRoot)
        pScene->mRoot->VisitPreOrder([this](OrvAsfNode* pBone) {
            IndexBone(pBone);
            return false;
        });
    // An error anywhere (a NUL byte in a section that otherwise ends quietly, say) fails the read.
    const bool lResult = ReadSections() && pScene->mRoot != nullptr && GetErrorCount() == 0;
    ForgetReadState();
    if (lResult)
    {
        pScene->mRoot->SetupPosition(pUseRotationOffset, pUsePreRotation);
        if (pRemoveDummy) pScene->mRoot->RemoveDummy(pUseRotationOffset, pUsePreRotation);
    }
    mAsfScene = nullptr;
    return lResult;
}

void OrvFileAcclaimAsf::ForgetReadState()
{
    mBonesByName.clear();
    mSubtreeHeights.clear();
    mMovedRootEntries = 0;
}

bool OrvFileAcclaimAsf::ReadSections()
{
    FirstLine();
    InitTokens(smMain);
    while (!mEndOfFile)
    {
        bool lGoOn = true;
        switch (Handle(smMain))
        {
        case eVersion: lGoOn = ReadVersion(); break;
        case eName: lGoOn = ReadName(); break;
        case eUnits: lGoOn = ReadUnits(); break;
        case eDocumentation: lGoOn = ReadDocumentation(); break;
        case eRoot: lGoOn = ReadRoot(); break;
        case eBoneData: lGoOn = ReadBoneData(); break;
        case eHierarchy: lGoOn = ReadHierarchy(); break;
        case eSkin: ReadSkin(); break;
        default:
            Warning("Ignoring unknown keyword (:%s)\n", mCurrentToken);
            SkipUnknownSection();
            break;
        }
        if (!lGoOn) return false;
    }
    return true;
}

bool OrvFileAcclaimAsf::SkipToSection()
{
    for (;;)
    {
        if (!NextLine()) return false;
        if (Check(smMain) != -1) return true;
    }
}

void OrvFileAcclaimAsf::SkipUnknownSection()
{
    bool lMore = NextLine();
    while (lMore && mCurrentToken[0] != ':') lMore = NextLine();
}

bool OrvFileAcclaimAsf::ReadVersion()
{
    double lVersion = 0.0;
    if (!GetDouble(lVersion, 1.0))
        Warning("Can't read file format version (%s), trying version 1.10\n", mCurrentToken);
    else if (std::trunc(lVersion * 100.0) != kVersionTimes100)
        Warning("Bad File format version (%f), trying 1.10\n", lVersion);
    return SkipToSection();
}

bool OrvFileAcclaimAsf::ReadName()
{
    if (!GetString(mAsfScene->mName, kNameLimit))
    {
        std::strcpy(mAsfScene->mName, "Untitled");
        Warning("Can't read skeleton name, using \"%s\"\n", mAsfScene->mName);
        return false;
    }
    // Lines between the name and the next section are unit lines.
    return ReadUnits();
}

bool OrvFileAcclaimAsf::ReadUnits()
{
    for (;;)
    {
        if (!NextLine()) return false;
        if (Check(smMain) != -1) return true;
        ReadUnitLine(Handle(smUnits));
    }
}

void OrvFileAcclaimAsf::ReadUnitLine(int pKeyword)
{
    switch (pKeyword)
    {
    case eMass:
        if (!GetUnit(mAsfScene->mMassUnit)) Warning("Can't read mass unit, using %f\n", mAsfScene->mMassUnit);
        break;
    case eLength:
        if (!GetUnit(mAsfScene->mLengthUnit)) Warning("Can't read length unit, using %f\n", mAsfScene->mLengthUnit);
        break;
    case eAngle:
        switch (Handle(smAngle))
        {
        case eDegrees: mAsfScene->mAngleUnit = 1.0; break;
        case eRadians: mAsfScene->mAngleUnit = kDegreesPerRadian; break;
        default: Warning("Unknown angle unit, using default (deg)\n"); break;
        }
        break;
    default: Warning("Unknown unit token\n"); break;
    }
}

bool OrvFileAcclaimAsf::GetUnit(double& pUnit)
{
    // An infinite unit would turn lengths into 0 or NaN.
    double lUnit = 0.0;
    if (!GetDouble(lUnit, 1.0) || !std::isfinite(lUnit)) return false;
    pUnit = lUnit;
    return true;
}

bool OrvFileAcclaimAsf::ReadDocumentation()
{
    return SkipToSection();
}

bool OrvFileAcclaimAsf::ReadSkin()
{
    // Up to three file names, one per line, the first on the ":skin" line; a section keyword
    // ends the list early, since it begins the next section.
    char lName[kSkinNameSize];
    for (int i = 0; i < kMaxSkinNames && mCurrentToken[0] != ':' && GetString(lName, kSkinNameSize); ++i) NextLine();
    while (!mEndOfFile && mCurrentToken[0] != ':') NextLine();
    return true;
}

} // namespace orvsdk
