#include "fuzz/AbsurdServer.h"

#include "fuzz/Demand.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <string_view>
#include <utility>

#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

namespace clipwren {

namespace {

constexpr std::uint32_t root = 33, visual = 34;
constexpr std::size_t shortestPacket = 32;

struct Extension {
    std::string_view name;
    std::uint8_t major, firstEvent;
};
constexpr Extension fixes{"XFIXES", 130, 80}, damage{"DAMAGE", 131, 90}, randr{"RANDR", 132, 95},
    memory{"MIT-SHM", 133, 70}, input{"XInputExtension", 134, 75};
constexpr std::array extensions{fixes, damage, randr, memory, input};

// Bytes one after the other, in this machine's order.
class Builder {
public:
    explicit Builder(std::vector<std::uint8_t>& bytes) : bytes(bytes) {}
    Builder& one(unsigned value) { return put(static_cast<std::uint8_t>(value)); }
    Builder& two(unsigned value) { return put(static_cast<std::uint16_t>(value)); }
    Builder& four(std::uint32_t value) { return put(value); }
    Builder& zeros(std::size_t count) {
        bytes.resize(bytes.size() + count);
        return *this;
    }
    Builder& text(std::string_view text) {
        bytes.insert(bytes.end(), text.begin(), text.end());
        return zeros((4 - text.size() % 4) % 4);
    }

private:
    template <typename T>
    Builder& put(T value) {
        const std::size_t at = bytes.size();
        bytes.resize(at + sizeof value);
        std::memcpy(bytes.data() + at, &value, sizeof value);
        return *this;
    }
    std::vector<std::uint8_t>& bytes;
};

template <typename T>
T fieldAt(const std::vector<std::uint8_t>& bytes, std::size_t at) {
    T value{};
    if (at + sizeof value <= bytes.size()) std::memcpy(&value, bytes.data() + at, sizeof value);
    return value;
}
template <typename T>
void setField(std::vector<std::uint8_t>& bytes, std::size_t at, T value) {
    if (at + sizeof value <= bytes.size()) std::memcpy(bytes.data() + at, &value, sizeof value);
}

// The first eight bytes of a reply; number and length are set when it is sent.
std::vector<std::uint8_t> replyHead(unsigned data = 0) {
    std::vector<std::uint8_t> reply;
    Builder(reply).one(1).one(data).two(0).four(0);
    return reply;
}

void complete(std::vector<std::uint8_t>& reply) {
    reply.resize(std::max(reply.size(), shortestPacket));
    reply.resize((reply.size() + 3) / 4 * 4);
    setField(reply, 4, static_cast<std::uint32_t>((reply.size() - shortestPacket) / 4));
}

} // namespace

AbsurdServer::AbsurdServer(std::span<const std::uint8_t> bytes, Handlers handlers)
    : listener(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)),
      choices(bytes),
      handlers(std::move(handlers)) {
    // Where clients look before they look for a file. A number that no real server has.
    for (int number = 1'000'000 + getpid();; ++number) {
        std::string place = "/tmp/.X11-unix/X";
        place += std::to_string(number);
        name = place.substr(place.rfind('X'));
        name[0] = ':';
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        place.copy(address.sun_path + 1, sizeof address.sun_path - 1);
        const auto length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 + place.size());
        if (bind(listener, reinterpret_cast<const sockaddr*>(&address), length) == 0) break;
        demand(errno == EADDRINUSE, "a socket");
    }
    demand(listen(listener, 1) == 0, "a socket to listen on");
    thread = std::thread([this] { serve(); });
}

AbsurdServer::~AbsurdServer() {
    shutdown(listener, SHUT_RDWR); // should nobody have come
    thread.join();
    close(listener);
}

void AbsurdServer::serve() {
    client = accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
    if (client < 0) return;
    const timeval patience{.tv_usec = 200'000};
    setsockopt(client, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    answerSetup();
    while (!isOver && serveRequest()) {
        if (choices.isExhausted())
            if (const auto tell = std::exchange(handlers.bytesRunOut, nullptr)) tell();
    }
    close(client);
    if (const auto tell = std::exchange(handlers.bytesRunOut, nullptr)) tell();
}

// Descriptors that come with the bytes are not wanted.
bool AbsurdServer::read(std::uint8_t* to, std::size_t size) {
    while (size > 0) {
        iovec part{to, size};
        alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(int) * 4)> control{};
        msghdr message{};
        message.msg_iov = &part;
        message.msg_iovlen = 1;
        message.msg_control = control.data();
        message.msg_controllen = control.size();
        const auto count = recvmsg(client, &message, MSG_CMSG_CLOEXEC);
        if (count < 0 && errno == EAGAIN) {
            handlers.clientWaits();
            continue;
        }
        if (count <= 0) return false;
        for (cmsghdr* head = CMSG_FIRSTHDR(&message); head; head = CMSG_NXTHDR(&message, head))
            for (std::size_t at = CMSG_LEN(0); at + sizeof(int) <= head->cmsg_len; at += sizeof(int)) {
                int descriptor = -1;
                std::memcpy(&descriptor, reinterpret_cast<const char*>(head) + at, sizeof descriptor);
                close(descriptor);
            }
        to += count;
        size -= static_cast<std::size_t>(count);
    }
    return true;
}

void AbsurdServer::send(const Packet& packet) {
    for (std::size_t sent = 0; sent < packet.size() && !isOver;) {
        const auto count = ::send(client, packet.data() + sent, packet.size() - sent, MSG_NOSIGNAL);
        if (count <= 0) isOver = true;
        sent += static_cast<std::size_t>(std::max<ssize_t>(count, 0));
    }
}

void AbsurdServer::answerSetup() {
    Packet head(12);
    if (!read(head.data(), head.size())) return;
    const auto padded = [](std::size_t size) { return (size + 3) / 4 * 4; };
    Packet rest(padded(fieldAt<std::uint16_t>(head, 6)) + padded(fieldAt<std::uint16_t>(head, 8)));
    if (!read(rest.data(), rest.size())) return;

    Packet setup;
    Builder build(setup);
    build.one(1).one(0).two(11).two(0).two(0);
    build.four(1).four(0x200000).four(0x1FFFFF).four(0); // release, identifiers, motion buffer
    build.two(8).two(65535).one(1).one(1).one(0).one(0); // vendor, longest request, screens, formats, orders
    build.one(32).one(32).one(8).one(255).four(0).text("fuzzing!");
    build.one(24).one(32).one(32).zeros(5); // a pixmap format
    build.four(root).four(35).four(0xFFFFFF).four(0).four(0).two(width).two(height).two(170).two(127);
    build.two(1).two(1).four(visual).one(0).one(0).one(24).one(1); // of the screen
    build.one(24).one(0).two(1).four(0);                           // a depth
    build.four(visual).one(4).one(8).two(256).four(0xFF0000).four(0xFF00).four(0xFF).four(0);
    setField(setup, 6, static_cast<std::uint16_t>((setup.size() - 8) / 4));
    send(setup);
}

bool AbsurdServer::serveRequest() {
    Packet request(4);
    if (!read(request.data(), 4)) return false;
    const std::size_t size = std::size_t{fieldAt<std::uint16_t>(request, 2)} * 4;
    if (size < 4) return false;
    request.resize(size);
    if (!read(request.data() + 4, size - 4)) return false;
    ++sequence;
    Packet reply = answer(request);
    if (reply.empty()) return true;
    complete(reply);
    sendEvents();
    goWrong(reply);
    if (reply.size() >= 4) setField(reply, 2, sequence);
    send(reply);
    return !isOver;
}

void AbsurdServer::goWrong(Packet& reply) {
    switch (choices.byte() % 16) {
    case 1: { // an absurd field, or several
        for (unsigned count = 1 + choices.byte() % 3; count > 0; --count) {
            constexpr std::array<std::uint32_t, 8> absurd{0,      1,          0x7FFF,     0x8000,
                                                          0xFFFF, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF};
            const std::size_t at = 8 + choices.byte() % 56;
            const std::uint32_t value = absurd[choices.byte() % absurd.size()];
            if (choices.byte() % 2)
                setField(reply, at, value);
            else
                setField(reply, at, static_cast<std::uint16_t>(value));
        }
        break;
    }
    case 2: // cut short, and honest about it
        reply.resize(std::max(shortestPacket, reply.size() / 4 * choices.byte() / 256 * 4));
        complete(reply);
        break;
    case 3: // longer than it should be
        reply.resize(reply.size() + 4 * choices.byte(), static_cast<std::uint8_t>(choices.byte()));
        complete(reply);
        break;
    case 4: // an error
        reply.assign(shortestPacket, 0);
        reply[1] = static_cast<std::uint8_t>(choices.byte());
        break;
    case 5: // the connection ends within it
        reply.resize(reply.size() * choices.byte() / 256);
        isOver = true;
        if (!reply.empty()) {
            setField(reply, 2, sequence);
            [[maybe_unused]] const auto sent = ::send(client, reply.data(), reply.size(), MSG_NOSIGNAL);
        }
        reply.clear();
        break;
    case 6: // promises more than comes, and then nothing
        setField(reply, 4, choices.byte() << 14 | choices.byte());
        setField(reply, 2, sequence);
        send(reply);
        isOver = true;
        break;
    case 7: // anything at all, of the right size
        for (std::size_t at = 8; at < reply.size(); at += 1 + choices.byte() % 8)
            reply[at] = static_cast<std::uint8_t>(choices.byte());
        break;
    default: break;
    }
}

void AbsurdServer::sendEvents() {
    for (unsigned count = choices.byte() % 8 == 1 ? 1 + choices.byte() % 4 : 0; count > 0; --count) {
        constexpr std::array<std::uint8_t, 8> kinds{
            damage.firstEvent,  fixes.firstEvent + 1, randr.firstEvent, randr.firstEvent + 1,
            22 /* configure */, 35 /* generic */,     0 /* error */,    12 /* expose */};
        Packet event(shortestPacket);
        event[0] = kinds[choices.byte() % kinds.size()];
        event[1] =
            event[0] == 35 && choices.byte() % 4 ? input.major : static_cast<std::uint8_t>(choices.byte());
        setField(event, 2, sequence);
        for (std::size_t at = 8; at < event.size(); at += 1 + choices.byte() % 16)
            event[at] = static_cast<std::uint8_t>(choices.byte());
        if (event[0] == 35) { // the only kind with a length
            const std::uint32_t more = choices.byte() % 4 ? 0 : choices.byte();
            setField(event, 4, more);
            event.resize(shortestPacket + more * 4);
            if (choices.byte() % 2) setField(event, 8, std::uint16_t{17}); // raw motion
        }
        send(event);
    }
}

AbsurdServer::Packet AbsurdServer::queryExtension(const Packet& request) {
    const std::size_t length = std::min<std::size_t>(fieldAt<std::uint16_t>(request, 4), request.size() - 8);
    const std::string_view name(reinterpret_cast<const char*>(request.data()) + 8, length);
    Packet reply = replyHead();
    const auto found = std::find_if(extensions.begin(), extensions.end(),
                                    [&](const Extension& extension) { return extension.name == name; });
    if (found != extensions.end()) Builder(reply).one(1).one(found->major).one(found->firstEvent).one(0);
    return reply;
}

// The answer as it should be; none to a request that has none.
AbsurdServer::Packet AbsurdServer::answer(const Packet& request) {
    Packet reply;
    switch (request[0]) {
    case 14: // GetGeometry
        reply = replyHead(24);
        Builder(reply).four(root).two(0).two(0).two(width).two(height).two(0);
        return reply;
    case 20: { // GetProperty
        constexpr std::string_view resources = "Xft.dpi:\t96\n";
        reply = replyHead(8);
        Builder(reply).four(31).four(0).four(resources.size()).zeros(12).text(resources);
        return reply;
    }
    case 38: // QueryPointer
        reply = replyHead(1);
        Builder(reply).four(root).four(0).two(120 + sequence % 7).two(90).two(0).two(0).two(0);
        return reply;
    case 43: // GetInputFocus
        reply = replyHead(1);
        Builder(reply).four(root);
        return reply;
    case 73: // GetImage
        reply = replyHead(24);
        Builder(reply).four(visual).zeros(20);
        reply.resize(reply.size() + std::size_t{fieldAt<std::uint16_t>(request, 12)} *
                                        fieldAt<std::uint16_t>(request, 14) * 4,
                     static_cast<std::uint8_t>(sequence));
        return reply;
    case 98: return queryExtension(request);
    default: return answerExtension(request[0], request[1], request);
    }
}

AbsurdServer::Packet AbsurdServer::answerExtension(std::uint8_t major, std::uint8_t minor,
                                                   const Packet& request) {
    const auto known = [&](const Extension& extension) { return extension.major == major; };
    if (major >= 128 && std::none_of(extensions.begin(), extensions.end(), known))
        return Packet(shortestPacket); // an error
    Packet reply = replyHead(major == memory.major ? 1 : 0);
    Builder build(reply);
    const auto is = [&](const Extension& extension, int operation) {
        return major == extension.major && minor == operation;
    };
    if (is(fixes, 0)) {
        build.four(5).four(0);
    } else if (is(fixes, 4)) { // GetCursorImage
        build.two(120).two(90).two(5).two(7).two(1).two(2).four(sequence).zeros(8);
        for (unsigned i = 0; i < 5 * 7; ++i)
            build.four(0x80402010 + i);
    } else if (is(fixes, 19)) { // FetchRegion
        build.two(0).two(0).two(width).two(height).zeros(16);
        build.two(110).two(85).two(20 + sequence % 40).two(9).two(300).two(300).two(4).two(4);
    } else if (is(damage, 0)) {
        build.four(1).four(1);
    } else if (is(randr, 0)) {
        build.four(1).four(5);
    } else if (is(randr, 42)) { // GetMonitors
        build.four(1).four(1).four(2).zeros(12);
        build.four(monitorID).one(1).one(1).two(2).two(0).two(0).two(width).two(height).four(170).four(127);
        build.four(500).four(501);
    } else if (is(memory, 0)) {
        build.two(1).two(2).two(0).two(0).one(2);
    } else if (is(memory, 4)) { // GetImage
        build.four(visual).four(std::uint32_t{fieldAt<std::uint16_t>(request, 12)} *
                                fieldAt<std::uint16_t>(request, 14) * 4);
    } else if (is(input, 47)) {
        build.two(2).two(2);
    } else {
        return {};
    }
    return reply;
}

} // namespace clipwren
