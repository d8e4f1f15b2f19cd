#ifndef ORVASF_TOOLS_ORVASF_SKELETONFILE_H
#define ORVASF_TOOLS_ORVASF_SKELETONFILE_H

#include <string>

namespace orvsdk {
class OrvAsfNode;
class OrvAsfScene;
}

namespace orvasf::tool {

// Reads the ASF file at pPath into pScene (constructed empty; the caller owns it either way)
// with the reader's default settings and prints the file's warnings and errors on standard
// error. True when the file was read; false when it could not be opened or was refused.
bool ReadSkeleton(const std::string& pPath, orvsdk::OrvAsfScene& pScene);

// Writes pScene (its root must be set) as an ASF file at pPath. The file is replaced only when
// the whole text was written; an existing file is never left half-written. False, with the
// reason printed on standard error naming the file, when it could not be written.
bool WriteSkeleton(const std::string& pPath, orvsdk::OrvAsfScene& pScene);

// Number of bones in pBone's subtree, pBone included.
int CountBones(const orvsdk::OrvAsfNode* pBone);
// Number of degrees of freedom in pBone's subtree, pBone included.
int CountDofs(const orvsdk::OrvAsfNode* pBone);

// The name of a DOF code ("tx" ... "rx"), or "?" for a code outside the table.
const char* DofName(int pCode);

} // namespace orvasf::tool

#endif
