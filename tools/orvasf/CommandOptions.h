#ifndef ORVASF_TOOLS_ORVASF_COMMANDOPTIONS_H
#define ORVASF_TOOLS_ORVASF_COMMANDOPTIONS_H

#include "driver/OrvImportDriver.h"

#include <string>
#include <vector>

namespace orvasf::tool {

// Everything an import needs: the files and the settings of reading, sampling and node building.
struct ImportOptions
{
    std::string mAsfPath;     // the ASF file, or the BVH or glTF file of a conversion
    std::string mMotionPath;  // empty: import the skeleton alone
    OrvImportSettings mSettings;
    OrvGltfReadSettings mGltf;  // the animation and sampling of a glTF file
};

// The "import" subcommand.
struct ImportCommandOptions
{
    ImportOptions mImport;
    bool mSummary = false;
    std::string mOutputPath;  // empty: standard output
};

// The "pose" subcommand.
struct PoseCommandOptions
{
    ImportOptions mImport;
    std::string mFrames;      // frame list text; empty: every frame
    std::string mOutputPath;  // empty: standard output
    int mDecimals = 4;        // digits after the point of every coordinate
};

// The "export" subcommand.
struct ExportCommandOptions
{
    std::string mAsfPath;
    std::string mOutputPath;
    bool mTranslationDofs = false;
    std::string mScale = "1,1,1";
    bool mUseLocalTransform = false;
};

// The "format" subcommand.
struct FormatCommandOptions
{
    std::string mAsfPath;
    std::string mOutputPath;
};

} // namespace orvasf::tool

#endif
