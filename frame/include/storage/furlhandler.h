#pragma once
#include "network/nerror.h"
#include "pluginterfaces/base/smartpointer.h"
#include "storage/fbstream.h"
#include "storage/furl.h"

namespace Tessarine {

/** What gets at the content of a URL, in the way of its protocol.

    URL       borrowed; open() changes it when it is sent on to another one.
    Threads   one at a time, which may be a worker, except cancel(). */
class FUrlHandler : public CmObject {
public:
    explicit FUrlHandler(FUrl& url) : url(url) {}

    /** The content can be read. false: getError() tells why. */
    virtual bool open() = 0;
    /** Lets go of the stream. */
    virtual void close() = 0;
    /** Ends what goes on, and all that is begun later: whoever wants the URL again makes a new handler. Any thread. */
    virtual void cancel() = 0;
    /** Of the content in bytes, as far as it is told; -1: not known. */
    virtual int64_t getLength() = 0;
    /** At the start of the content, once it is open; borrowed. Null before. */
    virtual FStream* getStream() = 0;

    NError getError() const { return error; }

    DECLARE_ABSTRACT_CLASS(FUrlHandler, CmObject)

protected:
    /** Always false. */
    bool fail(NError why) {
        error = why;
        return false;
    }

    FUrl& url;
    NError error = NError::kNone;
};

/** Of a file on the system's disks: absolute, and of this machine. */
class FUrlFileHandler : public FUrlHandler {
public:
    explicit FUrlFileHandler(FUrl& url) : FUrlHandler(url) {}

    bool open() override;
    void close() override { stream = nullptr; }
    /** Files don't keep one waiting: nothing is to be ended. */
    void cancel() override {}
    int64_t getLength() override;
    FStream* getStream() override { return stream; }

    DECLARE_ABSTRACT_CLASS(FUrlFileHandler, FUrlHandler)

private:
    OPtr<FStream> stream;
};

/** Make the protocols known: "file" without a port, "http" with 80, "https" with 443. The first use of a URL does it. */
void initFUrlFileHandler();
void initFUrlHttpHandler();
void initFUrlHttpsHandler();

/** Makes objects of one class from those of another. Found by its category among the compiled-in classes. */
class FObjectConverter : public CmObject {
public:
    static constexpr const char* kCategory = "ObjectConverter";

    /** A new object of the class, with one reference; null: not from this one, or not to that class. */
    virtual CmObject* convert(const CmObject& object, const char* className) = 0;

    DECLARE_ABSTRACT_CLASS(FObjectConverter, CmObject)
};

/** Between FUrl and FNPath, of absolute files. */
class UrlPathConverter : public FObjectConverter {
public:
    CmObject* convert(const CmObject& object, const char* className) override;

    DECLARE_CLASS(UrlPathConverter, FObjectConverter)
};

}  // namespace Tessarine
