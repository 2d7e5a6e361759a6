#ifndef ZT_CORE_EXPORT_H
#define ZT_CORE_EXPORT_H

// Marks the classes that Zt.Core makes visible to its users.
#if defined(__GNUC__) || defined(__clang__)
#define ZT_CORE_API __attribute__((visibility("default")))
#else
#define ZT_CORE_API
#endif

#endif
