#include "platform/linux/session/BusProbe.h"

#include "platform/linux/Descriptor.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <string>
#include <sys/socket.h>
#include <sys/un.h>
#include <thread>

namespace clipwren {
namespace {

constexpr int longest = 10'000;

// A socket that takes connections; what it does with them is the test's.
class Listener {
public:
    explicit Listener(const std::string& name) {
        sockaddr_un place{.sun_family = AF_UNIX};
        std::ranges::copy(name, place.sun_path);
        const auto size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + name.size());
        EXPECT_EQ(bind(socket.get(), reinterpret_cast<const sockaddr*>(&place), size), 0);
        EXPECT_EQ(listen(socket.get(), 5), 0);
    }

    // Answers one question, on a thread of its own.
    std::thread answerOnce() {
        return std::thread([this] {
            const Descriptor connection(accept(socket.get(), nullptr, nullptr));
            char question[7]{};
            EXPECT_EQ(recv(connection.get(), question, sizeof question, MSG_WAITALL), 7);
            EXPECT_EQ(std::string(question, sizeof question), std::string("\0AUTH\r\n", 7));
            connection.writeAll("REJECTED EXTERNAL\r\n", 19);
        });
    }
    void hangUpOnce() { const Descriptor connection(accept(socket.get(), nullptr, nullptr)); }

private:
    const Descriptor socket{::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)};
};

class BusProbe : public testing::Test {
protected:
    TemporaryFolder folder;
    std::string path = (folder.path() / "bus").string();
};

TEST_F(BusProbe, FindsABusThatAnswers) {
    Listener listener(path);
    std::thread bus = listener.answerOnce();
    EXPECT_TRUE(busAnswers("unix:path=" + path, longest));
    bus.join();
}

TEST_F(BusProbe, ReadsTheParts) {
    const std::string odd = (folder.path() / "a,b;c%").string();
    Listener listener(odd);
    std::thread bus = listener.answerOnce();
    EXPECT_TRUE(
        busAnswers("unix:guid=0f,path=" + folder.path().string() + "/a%2cb%3Bc%25,runtime=no", longest));
    bus.join();
}

TEST_F(BusProbe, FindsASocketWithoutAFile) {
    Listener listener('\0' + path);
    std::thread bus = listener.answerOnce();
    EXPECT_TRUE(busAnswers("unix:abstract=" + path, longest));
    bus.join();
}

TEST_F(BusProbe, TriesOneAfterTheOther) {
    Listener mute(path);
    Listener other(path + "2");
    std::thread bus = other.answerOnce();
    EXPECT_TRUE(busAnswers("unix:path=" + path + "3;unix:path=" + path + ";unix:path=" + path + "2", 50));
    bus.join();
}

TEST_F(BusProbe, DoesNotWaitForABusThatSaysNothing) {
    Listener mute(path);
    EXPECT_FALSE(busAnswers("unix:path=" + path, 50));
}

TEST_F(BusProbe, KnowsThatThereIsNone) {
    EXPECT_FALSE(busAnswers("unix:path=" + path, longest));
    EXPECT_FALSE(busAnswers("", longest));
    EXPECT_FALSE(busAnswers(";;", longest));
    EXPECT_FALSE(busAnswers("unix:path=" + std::string(200, 'x'), longest));
    EXPECT_FALSE(busAnswers("unix:path=%", longest));
    Listener listener(path);
    std::thread bus([&] { listener.hangUpOnce(); });
    EXPECT_FALSE(busAnswers("unix:path=" + path, longest));
    bus.join();
}

TEST_F(BusProbe, LeavesOtherTransportsToTheLibrary) {
    EXPECT_TRUE(busAnswers("tcp:host=localhost,port=1", longest));
    EXPECT_TRUE(busAnswers("unix:dir=/tmp", longest));
}

} // namespace
} // namespace clipwren
