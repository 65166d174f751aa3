#pragma once
#include "pluginterfaces/base/ibstream.h"
#include "tests/support/uncounted.h"
#include <algorithm>
#include <string>

/** Gives so many bytes at a time at most, takes so many in all, and can't seek. */
class PieceStream : public Uncounted<Tessarine::IBStream> {
public:
    PieceStream(std::string bytes, size_t piece) : bytes(std::move(bytes)), piece(piece) {}

    int32_t read(void* buffer, int32_t numBytes, int32_t* numBytesRead) override {
        const size_t count = std::min({size_t(numBytes), piece, bytes.size() - place});
        std::copy_n(bytes.data() + place, count, static_cast<char*>(buffer));
        place += count;
        *numBytesRead = int32_t(count);
        return count > 0 ? Tessarine::kResultOk : Tessarine::kResultFalse;
    }
    int32_t write(void* /*buffer*/, int32_t numBytes, int32_t* numBytesWritten) override {
        const size_t count = std::min(size_t(numBytes), piece);
        piece -= count;
        *numBytesWritten = int32_t(count);
        return count == size_t(numBytes) ? Tessarine::kResultOk : Tessarine::kResultFalse;
    }
    int32_t seek(int64_t /*pos*/, int32_t /*mode*/, int64_t* /*result*/) override { return Tessarine::kResultFalse; }
    int32_t tell(int64_t* /*pos*/) override { return Tessarine::kResultFalse; }

private:
    const std::string bytes;
    size_t piece;
    size_t place = 0;
};
