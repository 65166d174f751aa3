// A JPEG file from outside. The first byte says in which pieces it is read, the second where it is cut as well.
#include "imagesubject.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 2)
        return 0;
    const std::string file(data + 2, data + size);
    ImageSubject::check(file, size_t(data[0]) + 1, file.size() * data[1] / 256);
    return 0;
}
