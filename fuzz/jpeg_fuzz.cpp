// A JPEG file from outside.
#include "imagesubject.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    return ImageSubject::checkInput(data, size);
}
