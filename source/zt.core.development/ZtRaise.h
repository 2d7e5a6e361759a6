#ifndef ZT_DEVELOPMENT_ZTRAISE_H
#define ZT_DEVELOPMENT_ZTRAISE_H

// How the library raises and wraps failures.
//
//   ZT_RAISE("Zt::CZtArrayDouble::Delete", "Nullptr --> Object not initialized");
//   catch (CIException& e) { ZT_WRAP("Zt::CZtArrayString::Resize", "Error resizing Array", e); }
//   catch (std::bad_alloc& e) { ZT_RAISE_OUT_OF_MEMORY("Zt::CZtArrayString::New", e); }
//   catch (std::bad_alloc& e) { ZT_RAISE_OUT_OF_MEMORY(name, e, "Error resizing matrix:"); }
//
// Every failure names its source file, its fully qualified function and the
// line of the raising statement. The file comes from a name `ZtSourceFile`
// that the macros look up where they are used: an ordinary source file
// defines it once at namespace scope,
//
//   namespace { constexpr const char* ZtSourceFile = "ZtArrayDouble"; }
//
// and a generic class defines it as a static member, which class scope finds
// first, so a template keeps its own file wherever it is instantiated:
//
//   static constexpr const char* ZtSourceFile = "source\\zt.core.ex\\ZtArrayBase";
//
// Members of generic classes name themselves with ZtMemberName, which gives
// the exact forms "Zt::CZtArrayBase<double>::CopyFrom" and
// "Zt::CZtMemObj<class Zt::CZtString>::Reserve".

#include <new>
#include <string>

#include "ZtException.h"

namespace Zt {
namespace Detail {

// The type argument of a generic class as failures spell it.
template <class T>
struct ZtTypeName;
template <>
struct ZtTypeName<double> {
  static constexpr const char* value = "double";
};
template <>
struct ZtTypeName<float> {
  static constexpr const char* value = "float";
};
template <>
struct ZtTypeName<int> {
  static constexpr const char* value = "int";
};
template <>
struct ZtTypeName<unsigned int> {
  static constexpr const char* value = "unsigned int";
};
template <>
struct ZtTypeName<unsigned short> {
  static constexpr const char* value = "unsigned short";
};
template <>
struct ZtTypeName<unsigned char> {
  static constexpr const char* value = "unsigned char";
};
template <>
struct ZtTypeName<CZtString> {
  static constexpr const char* value = "class Zt::CZtString";
};

// "Zt::" + classTemplate + "<" + type + ">::" + member.
template <class T>
std::string ZtMemberName(const char* classTemplate, const char* member) {
  return std::string("Zt::") + classTemplate + "<" + ZtTypeName<T>::value + ">::" + member;
}

inline const char* FunctionText(const char* function) { return function; }
inline const char* FunctionText(const std::string& function) { return function.c_str(); }

[[noreturn]] inline void Raise(const CZtString& message, const char* file, const char* function,
                               unsigned int line) {
  throw CZtException::Create(message, file, function, line);
}

[[noreturn]] inline void Wrap(const CZtString& message, const char* file, const char* function,
                              unsigned int line, CIException& inner) {
  throw CZtException::Create(message, file, function, line, inner);
}

// A guarded allocation failed: the text of what(), behind an optional prefix,
// becomes a CZtOutOfMemoryException. The caught exception is not kept.
[[noreturn]] inline void RaiseOutOfMemory(const char* file, const char* function, unsigned int line,
                                          const std::bad_alloc& e, const char* prefix = "") {
  CZtString message(prefix);
  message << e.what();
  throw CZtOutOfMemoryException::Create(message, file, function, line);
}

}  // namespace Detail
}  // namespace Zt

#define ZT_RAISE(function, message) \
  ::Zt::Detail::Raise((message), ZtSourceFile, ::Zt::Detail::FunctionText(function), __LINE__)

#define ZT_WRAP(function, message, inner)                                                     \
  ::Zt::Detail::Wrap((message), ZtSourceFile, ::Zt::Detail::FunctionText(function), __LINE__, \
                     (inner))

// ZT_RAISE_OUT_OF_MEMORY(function, badAlloc) or (function, badAlloc, prefix).
#define ZT_RAISE_OUT_OF_MEMORY(function, ...)                                                  \
  ::Zt::Detail::RaiseOutOfMemory(ZtSourceFile, ::Zt::Detail::FunctionText(function), __LINE__, \
                                 __VA_ARGS__)

#endif
