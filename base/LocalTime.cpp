#include "base/LocalTime.h"

#include <array>

namespace clipwren {

namespace {

struct Field {
    std::string_view name;
    int LocalTime::* part;
};

constexpr std::array<Field, 6> fields{{{"yyyy", &LocalTime::year},
                                       {"MM", &LocalTime::month},
                                       {"dd", &LocalTime::day},
                                       {"HH", &LocalTime::hour},
                                       {"mm", &LocalTime::minute},
                                       {"ss", &LocalTime::second}}};

std::string padded(int number, std::size_t digits) {
    std::string text = std::to_string(number);
    if (text.size() < digits) text.insert(0, digits - text.size(), '0');
    return text;
}

} // namespace

std::string dateText(const LocalTime& time, std::string_view format) {
    std::string text;
    while (!format.empty()) {
        std::size_t taken = 1;
        for (const Field& field : fields)
            if (format.starts_with(field.name)) {
                text += padded(time.*field.part, field.name.size());
                taken = field.name.size();
            }
        if (taken == 1) text += format.front();
        format.remove_prefix(taken);
    }
    return text;
}

} // namespace clipwren
