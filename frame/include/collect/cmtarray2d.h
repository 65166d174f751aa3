#pragma once
#include <cstdint>
#include <memory>
#include <new>

namespace Tessarine {

/** A table of values, row by row in one block. */
template <class T>
class CmTArray2D {
public:
    CmTArray2D() = default;
    CmTArray2D(int32_t rows, int32_t columns) { resize(rows, columns); }

    /** A new table of T(). False, and as it was: no memory, or a size below 0. */
    bool resize(int32_t rows, int32_t columns) {
        if (rows < 0 || columns < 0)
            return false;
        std::unique_ptr<T[]> table(new (std::nothrow) T[uint64_t(rows) * uint64_t(columns)]());
        if (!table)
            return false;
        data.swap(table);
        numRows = rows;
        numColumns = columns;
        return true;
    }

    int32_t rows() const { return numRows; }
    int32_t columns() const { return numColumns; }
    /** The first value of a row that is there. */
    T* operator[](int32_t row) const { return data.get() + int64_t(row) * numColumns; }

private:
    int32_t numRows = 0, numColumns = 0;
    std::unique_ptr<T[]> data;
};

}  // namespace Tessarine
