#pragma once

/** Ends a fuzzer's run where something doesn't hold. */
inline void demand(bool holds) {
    if (!holds)
        __builtin_trap();
}
