// The settings file: any text may stand in it, and a setting that is stored changes nothing else.

#include "fuzz/Demand.h"
#include "platform/linux/IniText.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

using namespace clipwren;

namespace {

constexpr std::array<std::pair<std::string_view, std::string_view>, 5> names{{{"recording", "fps"},
                                                                              {"recording", "resolution"},
                                                                              {"recording", "maxDuration"},
                                                                              {"other", "fps"},
                                                                              {"", "fps"}}};

std::vector<std::optional<std::string>> values(const IniText& text) {
    std::vector<std::optional<std::string>> result;
    for (const auto& [group, key] : names)
        result.emplace_back(text.value(group, key));
    return result;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string input(reinterpret_cast<const char*>(data), size);
    IniText text(input);
    const auto before = values(text);
    for (const auto& value : before)
        if (value) {
            const std::int64_t number = integerFromIni(*value);
            demand(integerFromIni(std::to_string(number)) == number, "a number comes back as it was");
        }

    const std::size_t which = size % names.size();
    const auto& [group, key] = names[which];
    const std::string stored = std::to_string(static_cast<std::int64_t>(size) - 40);
    text.set(group, key, stored);
    auto expected = before;
    expected[which] = stored;
    demand(values(text) == expected, "one setting was stored, and only that one");
    demand(before[which] || text.text().size() > input.size(), "nothing is taken away for a new setting");

    const std::string once = text.text();
    text.set(group, key, stored);
    demand(text.text() == once, "storing it again changes nothing");
    return 0;
}
