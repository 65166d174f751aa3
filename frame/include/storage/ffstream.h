#pragma once
#include "storage/fbstream.h"
#include "storage/fpath.h"
#include <atomic>

namespace Tessarine {

/** A file, by the system's calls and without a buffer of its own: what was written is in the file, whatever becomes
    of the process.

    Errors    codes of the system (errno). The first one is kept until clearError(); a signal is none.
    Threads   one at a time. */
class FFileStream : public FStream, public ISizeableStream {
public:
    /** mode: bits of FOpenMode. */
    explicit FFileStream(int32_t mode = 1);
    ~FFileStream() override;
    FFileStream(const FFileStream&) = delete;
    FFileStream& operator=(const FFileStream&) = delete;

    void setPath(const FPath& newPath) { path = newPath; }
    const FPath& getPath() const { return path; }
    /** Opens the path with the mode; false, with the error kept: it can't be, or it is neither a file nor a
        character device (a folder, a pipe). Never waits for another process. */
    bool open();
    /** false: there was an error, now or before. */
    bool close();
    /** The system's descriptor, borrowed; -1 when closed. */
    int32_t getFileRef() const { return file; }

    int32_t queryInterface(const char* iid, void** obj) override;
    int64_t readRaw(void* buffer, int64_t count) override;
    int64_t writeRaw(const void* buffer, int64_t count) override;
    /** As readRaw, from a place in bytes from the start; the stream's own place stays, and no hook hears of it. Any number
        of threads at a time, as long as it is open. */
    int64_t readAt(int64_t place, void* buffer, int64_t count);
    /** The new place in bytes from the start; -1: there is no such place. */
    int64_t seek(int64_t pos, FSeekMode mode) override;
    int64_t tell() override;
    /** Down to the medium; false: there was an error, now or before. */
    bool flush() override;
    /** Open, and without an error. */
    bool verify() override { return file >= 0 && !error(); }
    void setReadWriteHook(UProgressHook* hook, int32_t blockSize) override;
    using FStream::seek;
    using FStream::tell;

    int32_t getStreamSize(int64_t& size) override;
    int32_t setStreamSize(int64_t size) override;
    /** Where the file ends, in bytes; -1: not known. */
    int64_t getEof();
    bool setEof(int64_t size);
    /** The last reading came to the end. */
    bool eof() const { return atEnd; }
    /** What places and sizes must be multiples of, in bytes; 0: any will do. */
    uint32_t getSeekAlign() const { return 0; }

    bool error() const { return firstError != 0; }
    int32_t getFirstError(bool clear);
    /** Kept unless there is one already. */
    void setFirstError(int32_t code);
    void clearError() { firstError = 0; }
    void getErrorMessage(FString& text) const;

    DECLARE_CLASS(FFileStream, FStream)
    FORWARD_REFCOUNT(FStream)

private:
    bool check(bool done);
    template <class Call>
    int64_t passAll(int64_t count, Call call);

    int32_t mode;
    int32_t file = -1;  // owned
    std::atomic<int32_t> firstError{0};
    bool atEnd = false;
    FPath path;
    UProgressHook* progress = nullptr;  // borrowed
    int64_t progressBytes = 0;          // it hears after so many; above 0 with a hook
};

}  // namespace Tessarine
