#include "encoding/LzwEncoder.h"

#include "encoding/GifWriter.h"
#include "tests/support/DecodedGif.h"
#include "tests/support/MemorySink.h"

#include <gtest/gtest.h>

#include <random>

namespace clipwren {
namespace {

std::vector<IndexChoice> withoutChoice(const std::vector<std::uint8_t>& indices) {
    std::vector<IndexChoice> choices;
    for (const std::uint8_t index : indices)
        choices.push_back({index, index});
    return choices;
}

// The indices as an independent decoder reads them from a file around the codes: as greys.
std::vector<Pixel> decoded(const std::vector<IndexChoice>& indices, int bits, int height = 1) {
    Palette palette;
    for (unsigned i = 0; i < 1u << bits; ++i)
        palette.push_back(i * 0x010101u);
    MemorySink sink;
    GifWriter writer(sink);
    const int width = static_cast<int>(indices.size()) / height;
    writer.begin({width, height}, palette);
    GifFrame frame{
        .rect = {0, 0, width, height}, .hundredths = 2, .minimumCodeSize = minimumCodeSize(palette.size())};
    frame.data = LzwEncoder().encode(indices, frame.minimumCodeSize);
    writer.frame(frame);
    writer.end();
    const DecodedGif gif = DecodedGif::read(sink.bytes);
    EXPECT_EQ(gif.error, "");
    return gif.frames.empty() ? std::vector<Pixel>{} : gif.frames.front().shown;
}

void expectOneOfTheTwo(const std::vector<IndexChoice>& choices, int bits) {
    const std::vector<Pixel> result = decoded(choices, bits);
    ASSERT_EQ(result.size(), choices.size());
    for (std::size_t i = 0; i < choices.size(); ++i)
        ASSERT_TRUE(result[i] == choices[i].first * 0x010101u || result[i] == choices[i].second * 0x010101u)
            << i << " of " << bits << " bits";
}

void expectRoundTrip(const std::vector<std::uint8_t>& indices, int bits) {
    std::vector<Pixel> expected;
    for (const std::uint8_t index : indices)
        expected.push_back(index * 0x010101u);
    EXPECT_EQ(decoded(withoutChoice(indices), bits), expected)
        << indices.size() << " indices of " << bits << " bits";
}

std::vector<std::uint8_t> randomIndices(std::size_t count, int bits, unsigned seed) {
    std::mt19937 random(seed);
    std::vector<std::uint8_t> indices(count);
    for (std::uint8_t& index : indices)
        index = static_cast<std::uint8_t>(random() & ((1u << bits) - 1));
    return indices;
}

TEST(LzwEncoder, KnownCodesOfATinyPicture) {
    // Clear (4), 1, 1, 1-1 (6), end (5): three bits each, four from the sixth string on.
    const std::vector<std::uint8_t> ones(4, 1);
    const std::vector<std::uint8_t> codes = LzwEncoder().encode(withoutChoice(ones), 2);
    // 100 001 110 001 101, the first code in the lowest bits.
    EXPECT_EQ(codes, (std::vector<std::uint8_t>{0b10001100, 0b01010011}));
}

TEST(LzwEncoder, TheEndCodeIsAsLongAsTheDecoderExpects) {
    // Clear and three codes of three bits, eight of four: the decoder then knows 16 and reads five.
    const std::vector<std::uint8_t> ones(66, 1);
    EXPECT_EQ(LzwEncoder().encode(withoutChoice(ones), 2).size(), 7u);
}

TEST(LzwEncoder, EveryShortLengthSurvives) {
    for (int bits = 1; bits <= 8; ++bits)
        for (std::size_t count = 1; count < 600; ++count) {
            expectRoundTrip(randomIndices(count, bits, static_cast<unsigned>(count)), bits);
            if (HasFailure()) return;
        }
}

TEST(LzwEncoder, LengthsAroundAFullTableSurvive) {
    // Random bytes make a string a code: the table is full after about 3,840.
    for (std::size_t count = 3'800; count < 3'900; ++count) {
        expectRoundTrip(randomIndices(count, 8, 7), 8);
        if (HasFailure()) return;
    }
}

TEST(LzwEncoder, LongRowsOfEveryKindSurvive) {
    for (int bits = 1; bits <= 8; ++bits) {
        expectRoundTrip(randomIndices(60'000, bits, 3), bits);
        expectRoundTrip(std::vector<std::uint8_t>(65'535, static_cast<std::uint8_t>((1 << bits) - 1)), bits);
    }
    std::vector<std::uint8_t> mixed;
    for (int i = 0; i < 30; ++i) {
        const auto noise = randomIndices(1'000, 8, static_cast<unsigned>(i));
        mixed.insert(mixed.end(), noise.begin(), noise.end());
        mixed.insert(mixed.end(), 1'000, static_cast<std::uint8_t>(i));
    }
    expectRoundTrip(mixed, 8);
}

TEST(LzwEncoder, RunsOfEveryLengthSurvive) {
    for (int bits = 1; bits <= 8; ++bits) {
        const auto last = static_cast<std::uint8_t>((1 << bits) - 1);
        std::vector<std::uint8_t> indices;
        for (std::size_t length = 1; length < 200; ++length) {
            indices.insert(indices.end(), length, last);
            indices.insert(indices.end(), 200 - length, 0);
        }
        expectRoundTrip(indices, bits);
    }
}

TEST(LzwEncoder, RunsSurviveNewTables) {
    // Noise makes the table stale again and again.
    for (int bits = 2; bits <= 8; ++bits) {
        std::vector<std::uint8_t> indices;
        for (int i = 0; i < 10; ++i) {
            const auto noise = randomIndices(5'000, bits, static_cast<unsigned>(i));
            indices.insert(indices.end(), noise.begin(), noise.end());
            indices.insert(indices.end(), 1'000, static_cast<std::uint8_t>(i % (1 << bits)));
        }
        expectRoundTrip(indices, bits);
    }
}

TEST(LzwEncoder, ATableFullOfOneRunSurvives) {
    // Each run is one longer than the one before, up to 4,090 or so.
    constexpr int height = 2'200;
    const std::vector<IndexChoice> indices(4'000 * height, {1, 1});
    const std::vector<Pixel> result = decoded(indices, 2, height);
    EXPECT_EQ(result, std::vector<Pixel>(indices.size(), 0x010101));
    EXPECT_LT(LzwEncoder().encode(indices, 2).size(), std::size_t{4'300} * 12 / 8);
}

TEST(LzwEncoder, EveryChoiceIsOneOfTheTwo) {
    for (int bits = 2; bits <= 8; ++bits) {
        const auto firsts = randomIndices(40'000, bits, 21);
        const auto seconds = randomIndices(40'000, 2, 22);
        std::vector<IndexChoice> choices;
        for (std::size_t i = 0; i < firsts.size(); ++i)
            choices.push_back({firsts[i], i % 3 ? seconds[i] : firsts[i]});
        expectOneOfTheTwo(choices, bits);
        if (HasFatalFailure()) return;
    }
}

TEST(LzwEncoder, EveryChoiceInARunIsOneOfTheTwo) {
    for (int bits = 2; bits <= 8; ++bits) {
        std::mt19937 random(static_cast<unsigned>(bits));
        const auto anyIndex = [&] { return static_cast<std::uint8_t>(random() % (1u << bits)); };
        std::vector<IndexChoice> choices;
        while (choices.size() < 60'000) {
            // Runs with and without a choice beside each other.
            const std::uint8_t index = random() % 2 ? std::uint8_t{0} : anyIndex();
            choices.insert(choices.end(), random() % 100, {index, anyIndex()});
            choices.insert(choices.end(), random() % 100, {index, index});
        }
        expectOneOfTheTwo(choices, bits);
        if (HasFatalFailure()) return;
    }
}

TEST(LzwEncoder, RunsMayTurnAsideWhereThatIsLonger) {
    // Runs of 0 that 1 follows, then the same with the ones hidden in choices: as short as if they were
    // known.
    std::vector<IndexChoice> fixed;
    std::vector<IndexChoice> open;
    for (int i = 0; i < 400; ++i) {
        const bool isKnown = i < 200;
        fixed.insert(fixed.end(), 20, {0, 0});
        fixed.insert(fixed.end(), 3, {1, 1});
        fixed.push_back({2, 2});
        open.insert(open.end(), 20, {0, 0});
        open.insert(open.end(), 3, isKnown ? IndexChoice{1, 1} : IndexChoice{0, 1});
        open.push_back({2, 2});
    }
    EXPECT_LE(LzwEncoder().encode(open, 2).size(), LzwEncoder().encode(fixed, 2).size());
}

TEST(LzwEncoder, ChoicesDoNotBreakARun) {
    std::vector<IndexChoice> run(20'000, {0, 0});
    const std::size_t alone = LzwEncoder().encode(run, 4).size();
    for (std::size_t i = 0; i < run.size(); ++i)
        run[i].second = static_cast<std::uint8_t>(i / 7 % 16);
    EXPECT_LE(LzwEncoder().encode(run, 4).size(), alone);
}

TEST(LzwEncoder, ChoicesSaveBytes) {
    // Stripes whose every second pixel may just as well join the run around it.
    std::vector<IndexChoice> fixed;
    std::vector<IndexChoice> open;
    const auto noise = randomIndices(20'000, 3, 5);
    for (const std::uint8_t index : noise) {
        fixed.push_back({index, index});
        open.push_back({index, 0});
    }
    EXPECT_LT(LzwEncoder().encode(open, 3).size() * 10, LzwEncoder().encode(fixed, 3).size());
}

TEST(LzwEncoder, AFullTableStaysWhileItFits) {
    // Once the table is full of this row's strings, more of the same costs less than learning them anew.
    const auto row = randomIndices(1'000, 4, 9);
    std::vector<std::uint8_t> half;
    for (int i = 0; i < 32; ++i)
        half.insert(half.end(), row.begin(), row.end());
    std::vector<std::uint8_t> whole = half;
    whole.insert(whole.end(), half.begin(), half.end());
    LzwEncoder encoder;
    const std::size_t once = encoder.encode(withoutChoice(half), 4).size();
    EXPECT_LT(encoder.encode(withoutChoice(whole), 4).size() - once, once);
    expectRoundTrip(whole, 4);
}

TEST(LzwEncoder, CanBeUsedAgain) {
    LzwEncoder encoder;
    const auto indices = withoutChoice(randomIndices(10'000, 5, 1));
    const auto once = encoder.encode(indices, 5);
    encoder.encode(withoutChoice(randomIndices(5'000, 8, 2)), 8);
    EXPECT_EQ(encoder.encode(indices, 5), once);
}

} // namespace
} // namespace clipwren
