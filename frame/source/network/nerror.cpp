#include "network/nerror.h"
#include "base/utranslatedstring.h"
#include <iterator>

namespace Tessarine {
namespace {
constexpr UTranslatedString kTexts[] = {
    UTranslatedString("No error occurred."),
    UTranslatedString("This address can not be asked for."),
    UTranslatedString("The server could not be found."),
    UTranslatedString("The server could not be reached."),
    UTranslatedString("The server did not answer in time."),
    UTranslatedString("The transfer was cancelled."),
    UTranslatedString("The connection was lost."),
    UTranslatedString("There is no secure connection to the server."),
    UTranslatedString("The server could not prove its identity."),
    UTranslatedString("The server's answer could not be understood."),
    UTranslatedString("The server refused the request."),
    UTranslatedString("The server redirected to an address that is not allowed."),
    UTranslatedString("The server redirected too many times."),
    UTranslatedString("The server needs another name or password."),
    UTranslatedString("The system has no means for a connection."),
};
static_assert(std::size(kTexts) == size_t(NError::kNumErrors), "each error has its text");
}  // namespace

const UTranslatedString& textOf(NError error) {
    return kTexts[size_t(error) < std::size(kTexts) ? size_t(error) : 0];
}

}  // namespace Tessarine
