// The one translation unit that compiles tinygltf's implementation.
#define TINYGLTF_IMPLEMENTATION
#include "gltf/OrvGltfModel.h"
