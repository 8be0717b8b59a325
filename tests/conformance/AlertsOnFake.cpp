#include "tests/conformance/AlertsConformance.h"
#include "tests/fakes/FakeMainQueue.h"
#include "tests/fakes/FakeServices.h"

#include <algorithm>

namespace clipwren {

struct FakeAlertsSubject {
    FakeAlerts fake;
    FakeMainQueue mainQueue;

    Alerts& alerts() { return fake; }
    MainQueue& queue() { return mainQueue; }
    void whenShown(const std::function<void()>& act) {
        fake.whileShown = [this, act] {
            act();
            mainQueue.run();
        };
    }
    void press(int index) { fake.answer = index; }
    void close() { fake.answer = std::max(static_cast<int>(fake.shown.back().buttons.size()) - 1, 0); }
};

INSTANTIATE_TYPED_TEST_SUITE_P(Fake, AlertsConformance, FakeAlertsSubject);

} // namespace clipwren
