#pragma once

#include "platform/Store.h"

#include <gtest/gtest.h>

#include <limits>

namespace clipwren {

// What every store does. `Subject` owns an empty one:
//   Store& store();
//   void putText(key, text);  stores, from outside, a value that is not a number
template <typename Subject>
class StoreConformance : public testing::Test {
protected:
    Subject subject;
};
TYPED_TEST_SUITE_P(StoreConformance);

TYPED_TEST_P(StoreConformance, AnEmptyStoreHoldsNothing) {
    auto& store = this->subject.store();
    EXPECT_FALSE(store.contains("recording.fps"));
    EXPECT_EQ(store.integer("recording.fps"), 0);
    EXPECT_TRUE(store.removeAll());
}

TYPED_TEST_P(StoreConformance, KeepsEachKeysValue) {
    auto& store = this->subject.store();
    EXPECT_TRUE(store.setInteger("recording.fps", 24));
    EXPECT_TRUE(store.setInteger("recording.maxDuration", 60));
    EXPECT_TRUE(store.setInteger("recording.fps", 10));
    EXPECT_EQ(store.integer("recording.fps"), 10);
    EXPECT_EQ(store.integer("recording.maxDuration"), 60);
    EXPECT_FALSE(store.contains("recording"));
    EXPECT_FALSE(store.contains("fps"));
    EXPECT_FALSE(store.contains("recording.resolution"));
}

TYPED_TEST_P(StoreConformance, AStoredZeroIsPresent) {
    EXPECT_TRUE(this->subject.store().setInteger("recording.maxDuration", 0));
    EXPECT_TRUE(this->subject.store().contains("recording.maxDuration"));
    EXPECT_EQ(this->subject.store().integer("recording.maxDuration"), 0);
}

TYPED_TEST_P(StoreConformance, HoldsAll64Bits) {
    using Limits = std::numeric_limits<std::int64_t>;
    for (const auto value : {Limits::min(), Limits::max(), std::int64_t{-1}}) {
        EXPECT_TRUE(this->subject.store().setInteger("a.b", value));
        EXPECT_EQ(this->subject.store().integer("a.b"), value);
    }
}

TYPED_TEST_P(StoreConformance, ATextThatIsNoNumberIsPresentAndZero) {
    this->subject.putText("recording.maxDuration", "soon");
    EXPECT_TRUE(this->subject.store().contains("recording.maxDuration"));
    EXPECT_EQ(this->subject.store().integer("recording.maxDuration"), 0);
    EXPECT_TRUE(this->subject.store().setInteger("recording.maxDuration", 15));
    EXPECT_EQ(this->subject.store().integer("recording.maxDuration"), 15);
}

TYPED_TEST_P(StoreConformance, RemoveAllLeavesNothing) {
    auto& store = this->subject.store();
    EXPECT_TRUE(store.setInteger("recording.fps", 24));
    EXPECT_TRUE(store.setInteger("top", 1));
    EXPECT_TRUE(store.removeAll());
    EXPECT_FALSE(store.contains("recording.fps"));
    EXPECT_FALSE(store.contains("top"));
    EXPECT_TRUE(store.setInteger("recording.fps", 30));
    EXPECT_EQ(store.integer("recording.fps"), 30);
}

REGISTER_TYPED_TEST_SUITE_P(StoreConformance, AnEmptyStoreHoldsNothing, KeepsEachKeysValue,
                            AStoredZeroIsPresent, HoldsAll64Bits, ATextThatIsNoNumberIsPresentAndZero,
                            RemoveAllLeavesNothing);

} // namespace clipwren
