#include "tests/conformance/CanvasConformance.h"
#include "tests/fakes/FakeCanvas.h"

namespace clipwren {

namespace {

struct FakeSubject {
    FakeCanvases fakes;
    Canvases& canvases() { return fakes; }
};

} // namespace

INSTANTIATE_TYPED_TEST_SUITE_P(Fake, CanvasConformance, FakeSubject);

} // namespace clipwren
