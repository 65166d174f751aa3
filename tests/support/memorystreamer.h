#pragma once
#include "base/source/fstreamer.h"
#include <algorithm>
#include <cstring>
#include <string>

/** A streamer over a string of bytes; room limits what it takes, like a disk that is full. */
class MemoryStreamer : public Tessarine::FStreamer {
public:
    explicit MemoryStreamer(std::string content = {}) : bytes(std::move(content)) {}
    virtual ~MemoryStreamer() = default;

    int64_t readRaw(void* buffer, int64_t size) override {
        size = std::clamp<int64_t>(int64_t(bytes.size()) - cursor, 0, size);
        std::memcpy(buffer, bytes.data() + cursor, size_t(size));
        cursor += size;
        return size;
    }
    int64_t writeRaw(const void* buffer, int64_t size) override {
        size = std::clamp<int64_t>(room - cursor, 0, size);
        if (size_t(cursor + size) > bytes.size())
            bytes.resize(size_t(cursor + size));
        std::memcpy(bytes.data() + cursor, buffer, size_t(size));
        cursor += size;
        return size;
    }
    int64_t seek(int64_t position, Tessarine::FSeekMode mode) override {
        const int64_t bases[] = {0, cursor, int64_t(bytes.size())};
        return cursor = std::clamp<int64_t>(bases[mode] + position, 0, int64_t(bytes.size()));
    }
    int64_t tell() override { return cursor; }

    std::string bytes;
    int64_t room = INT32_MAX;
    int64_t cursor = 0;
};
