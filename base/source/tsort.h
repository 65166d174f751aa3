#pragma once
#include <algorithm>
#include <bit>
#include <cstddef>
#include <utility>

namespace Tessarine {

/** The steps of introSort; all of them look at nothing outside the range, whatever less answers. */
namespace SortSteps {
constexpr std::ptrdiff_t kSmall = 16;  // from here on down insertion is the fastest

template <class T, class Less>
void insertionSort(T* first, T* last, Less& less) {
    for (T* at = first; at != last; ++at) {
        T moving(std::move(*at));
        T* hole = at;
        for (; hole != first && less(moving, hole[-1]); --hole)
            *hole = std::move(hole[-1]);
        *hole = std::move(moving);
    }
}

template <class T, class Less>
void siftDown(T* heap, std::ptrdiff_t hole, std::ptrdiff_t count, Less& less) {
    T sinking(std::move(heap[hole]));
    for (std::ptrdiff_t child = 2 * hole + 1; child < count; child = 2 * hole + 1) {
        if (child + 1 < count && less(heap[child], heap[child + 1]))
            ++child;
        if (!less(sinking, heap[child]))
            break;
        heap[hole] = std::move(heap[child]);
        hole = child;
    }
    heap[hole] = std::move(sinking);
}

template <class T, class Less>
void heapSort(T* first, T* last, Less& less) {
    std::ptrdiff_t count = last - first;
    for (std::ptrdiff_t at = count / 2; at > 0;)
        siftDown(first, --at, count, less);
    while (--count > 0) {
        std::swap(first[0], first[count]);
        siftDown(first, 0, count, less);
    }
}

/** Brings the median of three elements behind the first one to the front. */
template <class T, class Less>
void medianToFront(T* first, T* last, Less& less) {
    T* low = first + 1;
    T* middle = first + (last - first) / 2;
    T* high = last - 1;
    if (less(*middle, *low))
        std::swap(low, middle);
    if (less(*high, *middle))
        middle = less(*high, *low) ? low : high;
    std::swap(*first, *middle);
}

/** Where the pivot comes to stand: nothing before is greater, nothing behind is less. */
template <class T, class Less>
T* partition(T* first, T* last, Less& less) {
    medianToFront(first, last, less);
    T* left = first + 1;
    T* right = last - 1;
    for (;; ++left, --right) {
        while (left <= right && less(*left, *first))
            ++left;
        while (left <= right && less(*first, *right))
            --right;
        if (left >= right)
            break;
        std::swap(*left, *right);
    }
    if (right != first)
        std::swap(*first, *right);
    return right;
}

template <class T, class Less>
void sortTo(T* first, T* last, int depth, Less& less) {
    while (last - first > kSmall) {
        if (depth-- == 0)
            return heapSort(first, last, less);
        T* pivot = partition(first, last, less);
        const bool leftIsShorter = pivot - first < last - pivot;
        sortTo(leftIsShorter ? first : pivot + 1, leftIsShorter ? pivot : last, depth, less);
        (leftIsShorter ? first : last) = leftIsShorter ? pivot + 1 : pivot;
    }
    insertionSort(first, last, less);
}
}  // namespace SortSteps

/** Sorts a range; equal elements come in any order. Takes time n log n and reads nothing outside the range even when
    less is no order at all, as the comparison of objects that were written apart may be none. */
template <class T, class Less>
void introSort(T* first, T* last, Less less) {
    const int depth = 2 * std::bit_width(size_t(last - first));
    SortSteps::sortTo(first, last, depth, less);
}

}  // namespace Tessarine
