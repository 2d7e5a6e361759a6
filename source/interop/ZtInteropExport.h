#ifndef ZT_INTEROP_EXPORT_H
#define ZT_INTEROP_EXPORT_H

// Marks the classes that Zt.Interop.Runtime30 makes visible to its users.
// Everything else in the library stays hidden.
#if defined(__GNUC__) || defined(__clang__)
#define ZT_INTEROP_API __attribute__((visibility("default")))
#else
#define ZT_INTEROP_API
#endif

#endif
