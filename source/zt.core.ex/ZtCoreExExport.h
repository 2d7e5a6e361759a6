#ifndef ZT_CORE_EX_EXPORT_H
#define ZT_CORE_EX_EXPORT_H

// Marks the classes that Zt.Core.Ex makes visible to its users. Internal
// classes never carry it and stay out of the dynamic symbol table.
#if defined(__GNUC__) || defined(__clang__)
#define ZT_CORE_EX_API __attribute__((visibility("default")))
#else
#define ZT_CORE_EX_API
#endif

#endif
