// SPDX-License-Identifier: GPL-3.0-or-later
// A compositor without a screen and with two clipboards, for whoever speaks ext_data_control_v1.
//
// Prints the name of its socket. Then, one a line: "seat on|off", "ext on|off" and "wlr on|off" (the
// managers; that of wlr is there to be refused), "bound" (prints which managers were bound, in order), and
// its end with the input's. Each prints "done".
#include <array>
#include <cstdio>
#include <iostream>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <unistd.h>
#include <vector>

#include <ext-data-control-v1-server-protocol.h>
#include <wayland-server.h>

extern const wl_interface zwlr_data_control_manager_v1_interface;

namespace {

struct Source {
    wl_resource* resource;
    std::vector<std::string> types;
};

struct World {
    wl_display* display = wl_display_create();
    std::map<std::string, wl_global*> globals;
    std::string bound;
    std::set<wl_resource*> devices;
    std::array<Source*, 2> selections{};
};

World world;

void destroy(wl_client*, wl_resource* resource) { wl_resource_destroy(resource); }

// An offer stands for the source that was selected when it was made, as long as that lives.
void receive(wl_client*, wl_resource* offer, const char* type, int end) {
    auto* const source = static_cast<Source*>(wl_resource_get_user_data(offer));
    for (const Source* selected : world.selections) {
        if (selected != nullptr && selected == source) {
            ext_data_control_source_v1_send_send(source->resource, type, end);
        }
    }
    close(end);
}
const struct ext_data_control_offer_v1_interface offerRequests { receive, destroy };

void tell(wl_resource* device, std::size_t which) {
    Source* const source = world.selections.at(which);
    wl_resource* offer = nullptr;
    if (source != nullptr) {
        offer =
            wl_resource_create(wl_resource_get_client(device), &ext_data_control_offer_v1_interface, 1, 0);
        wl_resource_set_implementation(offer, &offerRequests, source, nullptr);
        ext_data_control_device_v1_send_data_offer(device, offer);
        for (const std::string& type : source->types) {
            ext_data_control_offer_v1_send_offer(offer, type.c_str());
        }
    }
    if (which == 0) {
        ext_data_control_device_v1_send_selection(device, offer);
    } else {
        ext_data_control_device_v1_send_primary_selection(device, offer);
    }
}

void select(std::size_t which, Source* source) {
    Source* const before = world.selections.at(which);
    if (before != nullptr && before != source) {
        ext_data_control_source_v1_send_cancelled(before->resource);
    }
    world.selections.at(which) = source;
    for (wl_resource* const device : world.devices) {
        tell(device, which);
    }
}

void selectFrom(std::size_t which, wl_resource* source) {
    select(which, source == nullptr ? nullptr : static_cast<Source*>(wl_resource_get_user_data(source)));
}
void setSelection(wl_client*, wl_resource*, wl_resource* source) { selectFrom(0, source); }
void setPrimary(wl_client*, wl_resource*, wl_resource* source) { selectFrom(1, source); }
const struct ext_data_control_device_v1_interface deviceRequests { setSelection, destroy, setPrimary };

void addType(wl_client*, wl_resource* resource, const char* type) {
    static_cast<Source*>(wl_resource_get_user_data(resource))->types.emplace_back(type);
}
void sourceGone(wl_resource* resource) {
    auto* const source = static_cast<Source*>(wl_resource_get_user_data(resource));
    for (std::size_t which = 0; which < world.selections.size(); ++which) {
        if (world.selections.at(which) == source) {
            world.selections.at(which) = nullptr;
            for (wl_resource* const device : world.devices) {
                tell(device, which);
            }
        }
    }
    delete source;
}
const struct ext_data_control_source_v1_interface sourceRequests { addType, destroy };

void createSource(wl_client* client, wl_resource*, std::uint32_t id) {
    wl_resource* const resource = wl_resource_create(client, &ext_data_control_source_v1_interface, 1, id);
    wl_resource_set_implementation(resource, &sourceRequests, new Source{resource, {}}, sourceGone);
}
void getDevice(wl_client* client, wl_resource*, std::uint32_t id, wl_resource*) {
    wl_resource* const resource = wl_resource_create(client, &ext_data_control_device_v1_interface, 1, id);
    wl_resource_set_implementation(resource, &deviceRequests, nullptr,
                                   [](wl_resource* gone) { world.devices.erase(gone); });
    world.devices.insert(resource);
    tell(resource, 0);
    tell(resource, 1);
}
const struct ext_data_control_manager_v1_interface managerRequests { createSource, getDevice, destroy };

void bindManager(wl_client* client, void*, std::uint32_t, std::uint32_t id) {
    world.bound += " ext";
    wl_resource* const resource = wl_resource_create(client, &ext_data_control_manager_v1_interface, 1, id);
    wl_resource_set_implementation(resource, &managerRequests, nullptr, nullptr);
}
void bindOther(wl_client* client, void*, std::uint32_t version, std::uint32_t id) {
    world.bound += " wlr";
    wl_resource_post_error(
        wl_resource_create(client, &zwlr_data_control_manager_v1_interface, static_cast<int>(version), id), 0,
        "the other one is better");
}
void bindSeat(wl_client* client, void*, std::uint32_t version, std::uint32_t id) {
    wl_resource_create(client, &wl_seat_interface, static_cast<int>(version), id);
}

void offerGlobal(const std::string& name) {
    if (name == "seat") {
        world.globals[name] = wl_global_create(world.display, &wl_seat_interface, 1, nullptr, bindSeat);
    } else if (name == "ext") {
        world.globals[name] =
            wl_global_create(world.display, &ext_data_control_manager_v1_interface, 1, nullptr, bindManager);
    } else {
        world.globals[name] =
            wl_global_create(world.display, &zwlr_data_control_manager_v1_interface, 2, nullptr, bindOther);
    }
}

// With its seat a device ends, and what was on its clipboards is gone.
void endDevices() {
    for (wl_resource* const device : world.devices) {
        ext_data_control_device_v1_send_finished(device);
    }
    world.devices.clear();
    world.selections = {};
}

int readLine(int, std::uint32_t, void*) {
    std::string line;
    std::string name;
    std::string state;
    if (!std::getline(std::cin, line)) {
        wl_display_terminate(world.display);
        return 0;
    }
    std::istringstream(line) >> name >> state;
    if (name == "bound") {
        std::printf("%s\n", world.bound.c_str());
    } else if (state == "on") {
        offerGlobal(name);
    } else if (state == "off") {
        wl_global_remove(world.globals.at(name)); // who binds it meanwhile does no wrong
        if (name == "seat") {
            endDevices();
        }
    }
    std::puts("done");
    std::fflush(stdout);
    return 0;
}

} // namespace

int main() {
    const char* const socket = wl_display_add_socket_auto(world.display);
    if (socket == nullptr) {
        std::fputs("no socket: is XDG_RUNTIME_DIR set?\n", stderr);
        return 1;
    }
    std::setvbuf(stdin, nullptr, _IONBF, 0);
    std::cin.rdbuf()->pubsetbuf(nullptr, 0);
    wl_event_loop_add_fd(wl_display_get_event_loop(world.display), STDIN_FILENO, WL_EVENT_READABLE, readLine,
                         nullptr);
    std::printf("%s\n", socket);
    std::fflush(stdout);
    wl_display_run(world.display);
    wl_display_destroy_clients(world.display);
    wl_display_destroy(world.display);
    return 0;
}
