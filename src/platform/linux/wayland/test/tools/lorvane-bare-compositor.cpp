// SPDX-License-Identifier: GPL-3.0-or-later
// A compositor without a screen that offers what it is told to, for tests of the connection alone.
//
// Prints the name of its socket. Then, one a line: "add INTERFACE VERSION" (prints a number), "remove
// NUMBER", "refuse" (every bind is an error
// of the protocol from then on; prints that it is), "stop" (answers nobody from then on), and
// its end with the input's.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <map>
#include <sstream>
#include <string>
#include <unistd.h>

#include <wayland-server.h>

namespace {

struct World {
    wl_display* display = wl_display_create();
    std::map<int, wl_global*> globals;
    int last = 0;
    bool refuses = false;
    bool isStopped = false;
};

struct Offer {
    World& world;
    const wl_interface* interface;
};

const wl_interface* interfaceCalled(const std::string& name) {
    for (const wl_interface* known : {&wl_seat_interface, &wl_output_interface, &wl_shm_interface}) {
        if (name == known->name) {
            return known;
        }
    }
    return nullptr;
}

void bound(wl_client* client, void* data, std::uint32_t version, std::uint32_t id) {
    const auto& offer = *static_cast<Offer*>(data);
    wl_resource* const resource = wl_resource_create(client, offer.interface, static_cast<int>(version), id);
    if (offer.world.refuses) {
        wl_resource_post_error(resource, 7, "refused as it was told to");
    }
}

void perform(World& world, const std::string& line) {
    std::istringstream words(line);
    std::string verb;
    words >> verb;
    if (verb == "add") {
        std::string name;
        int version = 1;
        words >> name >> version;
        const wl_interface* const interface = interfaceCalled(name);
        auto* const offer = new Offer{world, interface}; // as long as the process
        world.globals[++world.last] = wl_global_create(world.display, interface, version, offer, bound);
        std::printf("%d\n", world.last);
    } else if (verb == "remove") {
        int number = 0;
        words >> number;
        wl_global_remove(world.globals.at(number)); // who binds it meanwhile does no wrong
        world.globals.erase(number);
    } else if (verb == "refuse") {
        world.refuses = true;
        std::puts("refusing");
    } else if (verb == "stop") {
        world.isStopped = true;
    }
    std::fflush(stdout);
}

int readLine(int, std::uint32_t, void* data) {
    auto& world = *static_cast<World*>(data);
    std::string line;
    if (!std::getline(std::cin, line)) {
        wl_display_terminate(world.display);
        return 0;
    }
    perform(world, line);
    while (world.isStopped && std::getline(std::cin, line)) {
    }
    return 0;
}

} // namespace

int main() {
    World world;
    const char* const socket = wl_display_add_socket_auto(world.display);
    if (socket == nullptr) {
        std::fputs("no socket: is XDG_RUNTIME_DIR set?\n", stderr);
        return 1;
    }
    std::setvbuf(stdin, nullptr, _IONBF, 0);
    std::cin.rdbuf()->pubsetbuf(nullptr, 0);
    wl_event_loop_add_fd(wl_display_get_event_loop(world.display), STDIN_FILENO, WL_EVENT_READABLE, readLine,
                         &world);
    std::printf("%s\n", socket);
    std::fflush(stdout);
    wl_display_run(world.display);
    wl_display_destroy(world.display);
    return 0;
}
