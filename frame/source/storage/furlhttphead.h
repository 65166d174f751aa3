#pragma once
#include <cstdint>
#include <string>
#include <string_view>

namespace Tessarine {

/** The head of an HTTP answer, line by line, as far as it is used. */
class FHttpHead {
public:
    static constexpr uint32_t kMaxLineBytes = 65536, kMaxLines = 1000, kMaxBytes = 1 << 20;

    /** The next line, without its end. false: it is none of an answer, or beyond the bounds. */
    bool takeLine(std::string_view line);
    /** The line that ends the head was taken. */
    bool isComplete() const { return complete; }

    /** 301, 302 or 307 with a place to go to. */
    bool isRedirect() const;
    bool wantsProxyLogin() const { return status == 407 && proxyBasic; }
    bool wantsLogin() const { return status == 401 && basic; }
    bool isFailure() const { return status >= 400 && status <= 599; }
    /** Nothing follows such a head, whatever it says. */
    bool isEmpty() const { return status == 204 || status == 304; }

    int32_t status = 0;         // 1 to 999; 0: not read
    int64_t length = -1;        // as told; -1: it wasn't
    int64_t contentBytes = -1;  // the same where the line has the very form that the length is read from
    std::string location;       // UTF-8, if the server is sane

private:
    bool takeStatus(std::string_view line);
    void takeHeader(std::string_view line);

    uint32_t lines = 0, bytes = 0;
    bool complete = false, basic = false, proxyBasic = false;
};

}  // namespace Tessarine
