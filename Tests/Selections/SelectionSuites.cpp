#include "Tests/Selections/SelectionSuites.h"

#include "Tests/Selections/Reading.h"

namespace tavel {

std::string displayLabel(const testing::TestParamInfo<SelectionPeersMaker>& info) {
    return info.param.label;
}

void PatientTest::takeAndAwait(OwnerPeer& one) {
    one.take();
    awaitNoticed(peers.board(), peers.board().changeCount());
}

} // namespace tavel
