#ifndef ZT_FUZZ_MODELS_H
#define ZT_FUZZ_MODELS_H

// Plain models shared by the fuzz targets.

#include <string>
#include <vector>

namespace ZtFuzz {

// The fields of `text` between single `delimiter` characters: every
// delimiter ends a field, empty ones included, and what follows the last
// delimiter is a field only if it is not empty. So "" has no field, "a,"
// has one and "," one empty one.
inline std::vector<std::string> SplitFields(const std::string& text, char delimiter) {
  std::vector<std::string> fields;
  std::string field;
  for (char c : text) {
    if (c == delimiter) {
      fields.push_back(field);
      field.clear();
    } else {
      field += c;
    }
  }
  if (!field.empty()) fields.push_back(field);
  return fields;
}

}  // namespace ZtFuzz

#endif
