#include "tests/conformance/ScreenCaptureConformance.h"
#include "tests/fakes/FakeMainQueue.h"
#include "tests/fakes/FakeScreenCapture.h"
#include "tests/support/Pictures.h"

namespace clipwren {

struct FakeCaptureSubject {
    FakeMainQueue mainQueue;
    FakeScreenCapture fake{mainQueue};
    int changes = 0;

    FakeCaptureSubject() { fake.content.displays = {{1}}; }

    ScreenCapture& capture() { return fake; }
    void pass(double seconds) { mainQueue.advance(seconds); }
    bool passUntil(const std::function<bool()>& condition) {
        for (int step = 0; step < 1000; ++step) {
            if (condition()) return true;
            pass(0.01);
        }
        return false;
    }
    void change() {
        ++changes;
        for (const auto& stream : fake.streams)
            stream->deliver(plainImage(stream->configuration.width, stream->configuration.height,
                                       0xFF000000 + static_cast<Pixel>(changes)),
                            MediaTime::nanoseconds(changes * 1'000'000));
    }
};

INSTANTIATE_TYPED_TEST_SUITE_P(Fake, ScreenCaptureConformance, FakeCaptureSubject);

} // namespace clipwren
