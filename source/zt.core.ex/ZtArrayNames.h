#ifndef ZT_CORE_EX_ZTARRAYNAMES_H
#define ZT_CORE_EX_ZTARRAYNAMES_H

// Internal: the names under which the exported array wrappers report
// failures. The source file of each exported array specialises the names
// for its element type before it instantiates its wrapper.

#include <string>

namespace Zt {
namespace Detail {

// Source file (File) and class name (Class) of the exported one-dimensional
// array of element type T.
template <class T>
struct ZtArrayNames;

// The same for the exported two-dimensional array of element type T.
template <class T>
struct ZtArray2DNames;

// "Zt::" + className + "::" + member, the name of a member of an exported class.
inline std::string ZtQualifiedName(const char* className, const char* member) {
  return std::string("Zt::") + className + "::" + member;
}

}  // namespace Detail
}  // namespace Zt

#endif
