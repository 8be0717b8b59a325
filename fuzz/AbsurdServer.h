#pragma once

#include "tests/support/Choices.h"

#include <cstdint>
#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace clipwren {

// An X server for one client, which knows just what a capture asks of it, and whose answers go wrong as the
// bytes decide: errors, replies with absurd fields, cut short or too long, events that nobody asked for, a
// connection that ends at any byte. What every program reads at its start, the setup, is sound.
class AbsurdServer {
public:
    struct Handlers {
        // Once, when nothing more goes wrong: from then on all answers are sound.
        std::function<void()> bytesRunOut;
        // Wrong answers may lead to requests that have none: the client waits, or so it seems.
        std::function<void()> clientWaits;
    };
    // Serves on a thread of its own, where the handlers are called, until the client leaves.
    AbsurdServer(std::span<const std::uint8_t> bytes, Handlers handlers);
    ~AbsurdServer();
    AbsurdServer(const AbsurdServer&) = delete;
    AbsurdServer& operator=(const AbsurdServer&) = delete;

    // What a client connects to.
    const std::string& displayName() const { return name; }

    // The one monitor.
    static constexpr std::uint32_t monitorID = 77;
    static constexpr int width = 640;
    static constexpr int height = 480;

private:
    using Packet = std::vector<std::uint8_t>;

    void serve();
    bool serveRequest();
    void answerSetup();
    Packet answer(const Packet& request);
    Packet answerExtension(std::uint8_t major, std::uint8_t minor, const Packet& request);
    Packet queryExtension(const Packet& request);
    void goWrong(Packet& reply);
    void sendEvents();
    bool read(std::uint8_t* to, std::size_t size);
    void send(const Packet& packet);

    int listener;
    std::string name;
    int client = -1;
    bool isOver = false;
    std::uint16_t sequence = 0;
    Choices choices;
    Handlers handlers;
    std::thread thread;
};

} // namespace clipwren
