#include "settings/Preferences.h"

#include "platform/Store.h"

namespace clipwren {

namespace {

template <typename Setting>
Setting read(const Store& store, std::string_view key, Setting defaultCase) {
    if (!store.contains(key)) return defaultCase;
    return caseForRawValue<Setting>(store.integer(key)).value_or(defaultCase);
}

} // namespace

RecordingFPS Preferences::fps(const Store& store) { return read(store, fpsKey, RecordingFPS::fps15); }

RecordingResolution Preferences::resolution(const Store& store) {
    return read(store, resolutionKey, RecordingResolution::width800);
}

MaxDuration Preferences::maxDuration(const Store& store) {
    return read(store, maxDurationKey, MaxDuration::seconds30);
}

} // namespace clipwren
