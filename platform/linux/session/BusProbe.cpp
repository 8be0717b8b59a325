#include "platform/linux/session/BusProbe.h"

#include "platform/linux/Descriptor.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdlib>
#include <optional>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>

namespace clipwren {

namespace {

constexpr std::string_view localTransport = "unix:";

// Takes the part before the separator, or all of it, off the text.
std::string_view takeBefore(char separator, std::string_view& text) {
    const std::string_view part = text.substr(0, text.find(separator));
    text.remove_prefix(std::min(part.size() + 1, text.size()));
    return part;
}

// Bytes that an address may not have as they are stand there as %XX.
std::string unescaped(std::string_view value) {
    std::string bytes;
    for (std::size_t i = 0; i < value.size(); ++i) {
        int byte = 0;
        const char* digits = value.data() + i + 1;
        if (value[i] == '%' && i + 2 < value.size() &&
            std::from_chars(digits, digits + 2, byte, 16).ptr == digits + 2) {
            bytes += static_cast<char>(byte);
            i += 2;
        } else {
            bytes += value[i];
        }
    }
    return bytes;
}

// The name of the socket as the system takes it: one without a file begins with a zero.
std::optional<std::string> socketName(std::string_view address) {
    address.remove_prefix(localTransport.size());
    while (!address.empty()) {
        std::string_view value = takeBefore(',', address);
        const std::string_view key = takeBefore('=', value);
        if (key == "path") return unescaped(value);
        if (key == "abstract") return '\0' + unescaped(value);
    }
    return std::nullopt;
}

// Asks for the ways to introduce oneself, which a bus tells everyone.
bool answers(const std::string& name, int milliseconds) {
    sockaddr_un place{.sun_family = AF_UNIX};
    if (name.size() >= sizeof place.sun_path) return false;
    std::ranges::copy(name, place.sun_path);
    // The zero at the end of a path does no harm and need not be there; the name of a socket without a file
    // has none.
    const auto size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + name.size());
    const Descriptor connection(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (!connection || connect(connection.get(), reinterpret_cast<const sockaddr*>(&place), size) != 0)
        return false;
    constexpr std::string_view question("\0AUTH\r\n", 7);
    if (send(connection.get(), question.data(), question.size(), MSG_NOSIGNAL) !=
        static_cast<ssize_t>(question.size()))
        return false;
    pollfd waiting{connection.get(), POLLIN, 0};
    char byte = 0;
    return poll(&waiting, 1, milliseconds) == 1 && recv(connection.get(), &byte, 1, 0) == 1;
}

} // namespace

std::string systemBusAddress() {
    const char* address = std::getenv("DBUS_SYSTEM_BUS_ADDRESS");
    return address && *address ? address : "unix:path=/var/run/dbus/system_bus_socket";
}

bool busAnswers(std::string_view addresses, int milliseconds) {
    while (!addresses.empty()) {
        const std::string_view address = takeBefore(';', addresses);
        if (address.empty()) continue;
        const auto name = address.starts_with(localTransport) ? socketName(address) : std::nullopt;
        if (!name || answers(*name, milliseconds)) return true;
    }
    return false;
}

} // namespace clipwren
