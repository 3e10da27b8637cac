#pragma once

#include <wayland-server-core.h>

#include <cstdint>
#include <memory>

namespace tavel {

/// What `makeResource` gave the resource.
template <typename Data>
Data& dataOf(wl_resource* resource) {
    return *static_cast<Data*>(wl_resource_get_user_data(resource));
}

/// Makes a client's object, which owns `data`. `requests` are the functions that handle its requests, in the
/// order of their numbers; they live as long as the process. Null, and an error of the client, if it fails.
template <typename Data, typename Requests>
wl_resource* makeResource(wl_client* client, const wl_interface& interface, int version, std::uint32_t number,
                          const Requests* requests, std::unique_ptr<Data> data) {
    wl_resource* const resource = wl_resource_create(client, &interface, version, number);
    if (resource == nullptr) {
        wl_client_post_no_memory(client);
        return nullptr;
    }
    wl_resource_set_implementation(resource, requests, data.release(),
                                   [](wl_resource* ended) { delete &dataOf<Data>(ended); });
    return resource;
}

/// The request `destroy` of every interface.
inline void destroyResource(wl_client*, wl_resource* resource) {
    wl_resource_destroy(resource);
}

} // namespace tavel
