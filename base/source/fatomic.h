#pragma once

/** Atomic steps on plain fields, each with a full barrier. The arithmetic ones return the previous value. */

namespace Tessarine {

inline int FAtomicAdd(volatile int& value, int amount) {
    return __atomic_fetch_add(&value, amount, __ATOMIC_SEQ_CST);
}

inline int FAtomicIncrement(volatile int& value) {
    return FAtomicAdd(value, 1);
}

inline int FAtomicDecrement(volatile int& value) {
    return FAtomicAdd(value, -1);
}

/** True: value was expected and is replacement now. */
inline bool FAtomicCompareAndSwap(volatile int& value, int expected, int replacement) {
    return __atomic_compare_exchange_n(&value, &expected, replacement, false, __ATOMIC_SEQ_CST, __ATOMIC_SEQ_CST);
}

inline bool FAtomicCompareAndSwap(void* volatile& value, void* expected, void* replacement) {
    return __atomic_compare_exchange_n(&value, &expected, replacement, false, __ATOMIC_SEQ_CST, __ATOMIC_SEQ_CST);
}

}  // namespace Tessarine
