#pragma once

#include "Tests/Selections/SelectionPeers.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace tavel {

// What holds on every display server. A program that links TavelSelectionSuites has INSTANTIATE_TEST_SUITE_P
// for each of these suites.

/// Names the instances of a suite after their display servers.
std::string displayLabel(const testing::TestParamInfo<SelectionPeersMaker>& info);

class SelectionTest : public testing::TestWithParam<SelectionPeersMaker> {
protected:
    static std::unique_ptr<SelectionPeers> start(const TransferTimeOuts& timeOuts) {
        return GetParam().make(timeOuts);
    }
};

/// An owner beside the tested program. No time-out ends anything.
class PatientTest : public SelectionTest {
private:
    const std::unique_ptr<SelectionPeers> peers_ = start(longTimeOuts());
    const std::unique_ptr<OwnerPeer> owner_ = peers_->makeOwner();

protected:
    /// Takes the selection, and returns when the program knows what is offered.
    void takeAndAwait(OwnerPeer& one);

    SelectionPeers& peers = *peers_;
    OwnerPeer& owner = *owner_;
};

class HostileOwner : public SelectionTest {};

/// The tested program gathers what an owner has.
class Gathered : public PatientTest {};

class NoticedContent : public PatientTest {
protected:
    void watch();
    std::vector<std::int64_t> noticed(std::size_t count);

    std::vector<std::int64_t> noticed_; // on the program's thread
    std::vector<std::string> marks_;
};

/// What is read of values that are larger than their reader takes.
class ReadingLimits : public PatientTest {};

/// Another program's content, to which the tested program adds a type.
class TakenOverContent : public SelectionTest {};

/// What is read of the values of another program.
class ForeignValues : public PatientTest {};

class LostServer : public SelectionTest {};

class ChangeCount : public PatientTest {
protected:
    std::int64_t moveOf(const std::function<void()>& operation);
};

/// A program that reads from the tested one.
class Reader : public SelectionTest {};

/// A program that ends while it reads a large picture from the tested one.
class VanishingReader : public PatientTest {
protected:
    void SetUp() override;
    void TearDown() override;
    void expectNothingLeft();

    const std::string picture = distinctBytes(std::size_t{30} << 20);
};

} // namespace tavel
