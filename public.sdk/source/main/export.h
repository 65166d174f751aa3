#pragma once

/** What a module shows to the outside: its entry points and the extension's classes. In a program the same sources show
    nothing. */
#ifdef TALV_BUILD_MODULE
#define TALV_EXPORT __attribute__((visibility("default")))
#else
#define TALV_EXPORT
#endif
