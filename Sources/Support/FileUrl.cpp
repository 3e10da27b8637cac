#include "Support/FileUrl.h"

#include "Support/Files.h"
#include "Support/Text.h"

#include <cstddef>

namespace tavel {

namespace {

constexpr std::string_view scheme = "file:";

bool isUnescaped(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
           std::string_view("!$&'()*+,-./:=@_~").find(c) != std::string_view::npos;
}

std::optional<unsigned> hexDigit(char c) {
    if (c >= '0' && c <= '9')
        return static_cast<unsigned>(c - '0');
    const char lower = asciiLowerCase(c);
    if (lower >= 'a' && lower <= 'f')
        return static_cast<unsigned>(lower - 'a') + 10;
    return std::nullopt;
}

std::optional<std::string> percentDecoded(std::string_view text) {
    std::string decoded;
    decoded.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            decoded += text[i];
            continue;
        }
        if (text.size() - i < 3)
            return std::nullopt;
        const auto high = hexDigit(text[i + 1]);
        const auto low = hexDigit(text[i + 2]);
        if (!high || !low)
            return std::nullopt;
        decoded += static_cast<char>(*high * 16 + *low);
        i += 2;
    }
    return decoded;
}

} // namespace

std::string fileUrlFromPath(const std::string& path) {
    static constexpr char digits[] = "0123456789ABCDEF";
    std::string url = "file://";
    url.reserve(url.size() + path.size() + 16);
    for (const char c : path) {
        if (isUnescaped(c)) {
            url += c;
        } else {
            const auto octet = static_cast<unsigned char>(c);
            url += '%';
            url += digits[octet >> 4];
            url += digits[octet & 0x0F];
        }
    }
    if (!path.ends_with('/') && isDirectory(path))
        url += '/';
    return url;
}

std::optional<std::string> pathFromFileUrl(std::string_view url) {
    // Scheme and host compare without regard to ASCII case (RFC 3986, 3.1 and 3.2.2).
    if (url.size() < scheme.size() || !equalsIgnoringAsciiCase(url.substr(0, scheme.size()), scheme))
        return std::nullopt;
    url.remove_prefix(scheme.size());
    url = url.substr(0, url.find_first_of("?#"));
    if (url.starts_with("//")) {
        url.remove_prefix(2);
        const std::size_t slash = url.find('/');
        if (slash == std::string_view::npos)
            return std::nullopt;
        const std::string_view host = url.substr(0, slash);
        if (!host.empty() && !equalsIgnoringAsciiCase(host, "localhost"))
            return std::nullopt;
        url.remove_prefix(slash);
    }
    if (!url.starts_with('/'))
        return std::nullopt;

    auto path = percentDecoded(url);
    if (!path || path->find('\0') != std::string::npos || !isUtf8(*path))
        return std::nullopt;
    while (path->size() > 1 && path->ends_with('/'))
        path->pop_back();
    return path;
}

} // namespace tavel
