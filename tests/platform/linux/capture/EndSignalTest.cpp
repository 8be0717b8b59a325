#include "platform/linux/capture/EndSignal.h"

#include <gtest/gtest.h>

#include <poll.h>

namespace clipwren {

namespace {

bool isReadable(const EndSignal& signal) {
    pollfd descriptor{signal.descriptor(), POLLIN, 0};
    return poll(&descriptor, 1, 0) == 1;
}

} // namespace

TEST(EndSignal, WakesOnceForARequest) {
    EndSignal signal;
    ASSERT_TRUE(signal.isValid());
    EXPECT_FALSE(isReadable(signal));
    signal.request(EndSignal::Request::finish);
    EXPECT_TRUE(isReadable(signal));
    signal.acknowledge();
    EXPECT_FALSE(isReadable(signal));
    EXPECT_EQ(signal.requested(), EndSignal::Request::finish);
}

TEST(EndSignal, IsNeverWeakened) {
    EndSignal signal;
    signal.request(EndSignal::Request::abandon);
    signal.request(EndSignal::Request::finish);
    EXPECT_EQ(signal.requested(), EndSignal::Request::abandon);
}

} // namespace clipwren
