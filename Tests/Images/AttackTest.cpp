#include "Tests/Images/AttackTest.h"

#include <sys/wait.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace tavel {
namespace {

using namespace std::string_literals;

std::size_t openDescriptors() {
    const std::filesystem::directory_iterator all("/proc/self/fd");
    return static_cast<std::size_t>(std::distance(begin(all), end(all)));
}

std::optional<bool> achieved(const std::string& program, const Bytes& picture, ImageTimeLimits limits) {
    ProcessImageCodec codec([](const std::string& message) { ADD_FAILURE() << message; }, program, limits);
    return codec.hasAlpha(picture);
}

} // namespace

const std::string AttackTest::lockedProgram = TAVEL_ATTACKER;
const std::string AttackTest::unlockedProgram = TAVEL_UNLOCKED_ATTACKER;

void AttackTest::SetUp() {
    descriptors_ = openDescriptors();
}

void AttackTest::TearDown() {
    EXPECT_EQ(openDescriptors(), descriptors_);
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "a child is left";
    EXPECT_EQ(errno, ECHILD);
}

Bytes AttackTest::pictureWith(const std::string& order) {
    return Bytes::adopt("\x89PNG\r\n\x1a\n\0\0\0\x0DIHDR\0\0\0\x01\0\0\0\x01\x08\x02\0\0\0"s +
                        "\x90\x77\x53\xDE"s + "\n" + order);
}

Bytes AttackTest::heifWith(const std::string& order) {
    return Bytes::adopt("\0\0\0\x14"
                        "ftypavif\0\0\0\0avif\n"s +
                        order);
}

std::optional<bool> AttackTest::locked(const std::string& order, std::chrono::milliseconds limit) {
    return achieved(lockedProgram, pictureWith(order), {limit, limit});
}

std::optional<bool> AttackTest::unlocked(const std::string& order) {
    return achieved(unlockedProgram, pictureWith(order), {});
}

std::vector<std::string> AttackTest::children() {
    std::vector<std::string> found;
    for (const auto& thread : std::filesystem::directory_iterator("/proc/self/task")) {
        std::ifstream list(thread.path() / "children");
        found.insert(found.end(), std::istream_iterator<std::string>(list), {});
    }
    return found;
}

} // namespace tavel
