// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

#include <ext-data-control-v1-client-protocol.h>
#include <wlr-data-control-unstable-v1-client-protocol.h>

namespace lorvane {

/// The names of one protocol, so that both go through the same code.
struct WlrDataControl {
    using Manager = zwlr_data_control_manager_v1;
    using Device = zwlr_data_control_device_v1;
    using Source = zwlr_data_control_source_v1;
    using Offer = zwlr_data_control_offer_v1;
    using DeviceListener = zwlr_data_control_device_v1_listener;
    using SourceListener = zwlr_data_control_source_v1_listener;
    using OfferListener = zwlr_data_control_offer_v1_listener;
    static constexpr std::uint32_t version = 2;
    static constexpr std::uint32_t primarySince = 2;
    static const wl_interface& interface() { return zwlr_data_control_manager_v1_interface; }

    static Device* device(Manager* manager, wl_seat* seat) {
        return zwlr_data_control_manager_v1_get_data_device(manager, seat);
    }
    static Source* source(Manager* manager) {
        return zwlr_data_control_manager_v1_create_data_source(manager);
    }
    static void listen(Device* device, const DeviceListener* listener, void* data) {
        zwlr_data_control_device_v1_add_listener(device, listener, data);
    }
    static void listen(Source* source, const SourceListener* listener, void* data) {
        zwlr_data_control_source_v1_add_listener(source, listener, data);
    }
    static void listen(Offer* offer, const OfferListener* listener, void* data) {
        zwlr_data_control_offer_v1_add_listener(offer, listener, data);
    }
    static void offer(Source* source, const char* type) { zwlr_data_control_source_v1_offer(source, type); }
    static void receive(Offer* offer, const char* type, int end) {
        zwlr_data_control_offer_v1_receive(offer, type, end);
    }
    static void setSelection(Device* device, Source* source) {
        zwlr_data_control_device_v1_set_selection(device, source);
    }
    static void setPrimary(Device* device, Source* source) {
        zwlr_data_control_device_v1_set_primary_selection(device, source);
    }
    static void destroy(Manager* manager) { zwlr_data_control_manager_v1_destroy(manager); }
    static void destroy(Device* device) { zwlr_data_control_device_v1_destroy(device); }
    static void destroy(Source* source) { zwlr_data_control_source_v1_destroy(source); }
    static void destroy(Offer* offer) { zwlr_data_control_offer_v1_destroy(offer); }
};

struct ExtDataControl {
    using Manager = ext_data_control_manager_v1;
    using Device = ext_data_control_device_v1;
    using Source = ext_data_control_source_v1;
    using Offer = ext_data_control_offer_v1;
    using DeviceListener = ext_data_control_device_v1_listener;
    using SourceListener = ext_data_control_source_v1_listener;
    using OfferListener = ext_data_control_offer_v1_listener;
    static constexpr std::uint32_t version = 1;
    static constexpr std::uint32_t primarySince = 1;
    static const wl_interface& interface() { return ext_data_control_manager_v1_interface; }

    static Device* device(Manager* manager, wl_seat* seat) {
        return ext_data_control_manager_v1_get_data_device(manager, seat);
    }
    static Source* source(Manager* manager) {
        return ext_data_control_manager_v1_create_data_source(manager);
    }
    static void listen(Device* device, const DeviceListener* listener, void* data) {
        ext_data_control_device_v1_add_listener(device, listener, data);
    }
    static void listen(Source* source, const SourceListener* listener, void* data) {
        ext_data_control_source_v1_add_listener(source, listener, data);
    }
    static void listen(Offer* offer, const OfferListener* listener, void* data) {
        ext_data_control_offer_v1_add_listener(offer, listener, data);
    }
    static void offer(Source* source, const char* type) { ext_data_control_source_v1_offer(source, type); }
    static void receive(Offer* offer, const char* type, int end) {
        ext_data_control_offer_v1_receive(offer, type, end);
    }
    static void setSelection(Device* device, Source* source) {
        ext_data_control_device_v1_set_selection(device, source);
    }
    static void setPrimary(Device* device, Source* source) {
        ext_data_control_device_v1_set_primary_selection(device, source);
    }
    static void destroy(Manager* manager) { ext_data_control_manager_v1_destroy(manager); }
    static void destroy(Device* device) { ext_data_control_device_v1_destroy(device); }
    static void destroy(Source* source) { ext_data_control_source_v1_destroy(source); }
    static void destroy(Offer* offer) { ext_data_control_offer_v1_destroy(offer); }
};

} // namespace lorvane
