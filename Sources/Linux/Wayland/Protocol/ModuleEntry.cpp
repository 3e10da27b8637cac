#include "Linux/Wayland/DataControlModule.h"
#include "Linux/Wayland/Protocol/DataControlConnection.h"

#include <new>
#include <utility>

namespace tavel {
namespace {

/// The result of the function; 0 or null if there is no memory for it.
auto orNone(auto&& function) -> decltype(function()) {
    try {
        return function();
    } catch (const std::bad_alloc&) {
        return {};
    }
}

constexpr DataControlModule dataControlModule{
    .open = [](int socket, std::chrono::steady_clock::time_point deadline, const DataControlEvents& events,
               const char*& fault) -> DataControlConnection* {
        Descriptor owned(socket);
        fault = "cannot be asked for want of memory";
        return orNone([&] { return DataControlConnection::open(std::move(owned), deadline, events, fault); })
            .release();
    },
    .destroy = [](DataControlConnection* connection) { delete connection; },
    .protocol = [](const DataControlConnection& connection) { return connection.protocol(); },
    .hasPrimary = [](const DataControlConnection& connection) { return connection.hasPrimary(); },
    .descriptor = [](const DataControlConnection& connection) { return connection.descriptor(); },
    .isLost = [](const DataControlConnection& connection) { return connection.isLost(); },
    .dispatch = [](DataControlConnection& connection) { return connection.dispatch(); },
    .flush = [](DataControlConnection& connection) { return connection.flush(); },
    .select =
        [](DataControlConnection& connection, WaylandSelectionKind kind,
           const std::vector<std::string>& types) {
            return orNone([&] { return connection.select(kind, types); });
        },
    .withdraw = [](DataControlConnection& connection, std::uint64_t source) { connection.withdraw(source); },
    .receive = [](DataControlConnection& connection, std::uint64_t offer, const std::string& type,
                  int descriptor) { return connection.receive(offer, type, descriptor); },
    .ask = [](DataControlConnection& connection) { return orNone([&] { return connection.ask(); }); },
};

} // namespace
} // namespace tavel

extern "C" __attribute__((visibility("default"))) const tavel::DataControlModule* tavelDataControlModule() {
    return &tavel::dataControlModule;
}
