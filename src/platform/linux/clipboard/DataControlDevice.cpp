// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/clipboard/DataControlDevice.h"

#include "platform/linux/clipboard/DataControlProtocols.h"

#include <algorithm>
#include <array>
#include <vector>

namespace lorvane {

namespace {

template <typename Protocol>
class OfferOf final : public ForeignOffer {
 public:
    explicit OfferOf(typename Protocol::Offer* offer) : offer_(offer) {
        Protocol::listen(offer_, &listener, this);
    }
    OfferOf(const OfferOf&) = delete;
    OfferOf& operator=(const OfferOf&) = delete;
    ~OfferOf() override { Protocol::destroy(offer_); }

    [[nodiscard]] const QStringList& types() const override { return types_; }
    void receive(const QString& type, const FileDescriptor& writeEnd) override {
        Protocol::receive(offer_, type.toUtf8().constData(), writeEnd.number());
    }
    [[nodiscard]] typename Protocol::Offer* raw() const { return offer_; }

 private:
    static constexpr typename Protocol::OfferListener listener{
        [](void* self, typename Protocol::Offer*, const char* type) {
            auto& types = static_cast<OfferOf*>(self)->types_;
            if (const QString name = QString::fromUtf8(type); !types.contains(name)) {
                types.append(name);
            }
        }};

    typename Protocol::Offer* offer_;
    QStringList types_;
};

/// A source of ours while it is on a clipboard, or may be.
template <typename Protocol>
class SourceOf {
 public:
    SourceOf(typename Protocol::Source* source, DataControlDevice::Source content)
        : source_(source), content_(std::move(content)) {
        Protocol::listen(source_, &listener, this);
        for (const QString& type : content_.types) {
            Protocol::offer(source_, type.toUtf8().constData());
        }
    }
    SourceOf(const SourceOf&) = delete;
    SourceOf& operator=(const SourceOf&) = delete;
    ~SourceOf() { Protocol::destroy(source_); }

    [[nodiscard]] typename Protocol::Source* raw() const { return source_; }
    void replaced() { content_.cancelled = nullptr; }
    [[nodiscard]] bool isOver() const { return isOver_; }
    void lose() {
        isOver_ = true;
        if (const auto cancelled = std::exchange(content_.cancelled, nullptr)) {
            cancelled();
        }
    }

 private:
    static constexpr typename Protocol::SourceListener listener{
        [](void* self, typename Protocol::Source*, const char* type, int end) {
            static_cast<SourceOf*>(self)->content_.send(QString::fromUtf8(type), FileDescriptor(end));
        },
        [](void* self, typename Protocol::Source*) { static_cast<SourceOf*>(self)->lose(); }};

    typename Protocol::Source* source_;
    DataControlDevice::Source content_;
    bool isOver_ = false;
};

/// A device of one seat, which ends with it.
class EndingDevice : public DataControlDevice {
 public:
    /// It has ended: what of ours was on its clipboards is there no more.
    virtual void lose() = 0;
};

template <typename Protocol>
class DeviceOf final : public EndingDevice {
 public:
    DeviceOf(typename Protocol::Manager* manager, wl_seat* seat, std::uint32_t version)
        : manager_(manager), device_(Protocol::device(manager, seat)),
          hasPrimary_(version >= Protocol::primarySince) {
        Protocol::listen(device_, &listener, this);
    }
    DeviceOf(const DeviceOf&) = delete;
    DeviceOf& operator=(const DeviceOf&) = delete;
    ~DeviceOf() override {
        sources_.clear();
        current_ = {};
        announced_.clear();
        Protocol::destroy(device_);
        Protocol::destroy(manager_);
    }

    void offer(WaylandSelection selection, Source source) override {
        forgetOver();
        for (auto& [kept, where] : sources_) {
            if (where == selection) {
                kept->replaced();
            }
        }
        auto made = std::make_unique<SourceOf<Protocol>>(Protocol::source(manager_), std::move(source));
        set(selection, made->raw());
        sources_.push_back({std::move(made), selection});
    }
    void clear(WaylandSelection selection) override {
        for (auto& [kept, where] : sources_) {
            if (where == selection) {
                kept->replaced();
            }
        }
        set(selection, nullptr);
    }
    [[nodiscard]] std::shared_ptr<ForeignOffer> current(WaylandSelection selection) const override {
        return current_.at(static_cast<std::size_t>(selection));
    }
    [[nodiscard]] Handle onChange(std::function<void(WaylandSelection)> changed) override {
        return changed_.subscribe(std::move(changed));
    }
    [[nodiscard]] bool isAlive() const override { return isAlive_; }
    [[nodiscard]] bool hasPrimary() const override { return hasPrimary_; }
    void lose() override {
        for (auto& [kept, where] : sources_) {
            kept->lose();
        }
    }

 private:
    using OfferPtr = std::shared_ptr<OfferOf<Protocol>>;

    static constexpr typename Protocol::DeviceListener listener{
        [](void* self, typename Protocol::Device*, typename Protocol::Offer* offer) {
            static_cast<DeviceOf*>(self)->announced_.push_back(std::make_shared<OfferOf<Protocol>>(offer));
        },
        [](void* self, typename Protocol::Device*, typename Protocol::Offer* offer) {
            static_cast<DeviceOf*>(self)->selected(WaylandSelection::clipboard, offer);
        },
        [](void* self, typename Protocol::Device*) { static_cast<DeviceOf*>(self)->finished(); },
        [](void* self, typename Protocol::Device*, typename Protocol::Offer* offer) {
            static_cast<DeviceOf*>(self)->selected(WaylandSelection::primary, offer);
        }};

    void set(WaylandSelection selection, typename Protocol::Source* source) {
        if (!isAlive_) {
            return;
        }
        if (selection == WaylandSelection::clipboard) {
            Protocol::setSelection(device_, source);
        } else if (hasPrimary_) {
            Protocol::setPrimary(device_, source);
        }
    }
    void selected(WaylandSelection selection, typename Protocol::Offer* offer) {
        OfferPtr selectedOffer;
        const auto found = std::find_if(announced_.begin(), announced_.end(),
                                        [offer](const OfferPtr& one) { return one->raw() == offer; });
        if (found != announced_.end()) {
            selectedOffer = *found;
            announced_.erase(announced_.begin(), found + 1); // none before it is selected any more
        }
        current_.at(static_cast<std::size_t>(selection)) = selectedOffer;
        changed_.emit(selection);
    }
    void finished() {
        isAlive_ = false;
        current_ = {};
        lose();
        changed_.emit(WaylandSelection::clipboard);
        changed_.emit(WaylandSelection::primary);
    }
    void forgetOver() {
        std::erase_if(sources_, [](const auto& one) { return one.first->isOver(); });
    }

    typename Protocol::Manager* manager_;
    typename Protocol::Device* device_;
    bool hasPrimary_;
    bool isAlive_ = true;
    std::vector<OfferPtr> announced_;
    std::array<OfferPtr, 2> current_;
    std::vector<std::pair<std::unique_ptr<SourceOf<Protocol>>, WaylandSelection>> sources_;
    Signal<WaylandSelection> changed_;
};

template <typename Protocol>
std::unique_ptr<EndingDevice> openBy(WaylandConnection& connection, wl_seat* seat) {
    auto* const manager =
        connection.bind<typename Protocol::Manager>(Protocol::interface(), Protocol::version);
    if (manager == nullptr) {
        return nullptr;
    }
    const std::uint32_t version = wl_proxy_get_version(reinterpret_cast<wl_proxy*>(manager));
    return std::make_unique<DeviceOf<Protocol>>(manager, seat, version);
}

/// One device after the other, as seats and managers come and go.
class LastingDevice final : public DataControlDevice {
 public:
    LastingDevice(WaylandConnection& connection, WaylandSeat& seat) : connection_(connection), seat_(seat) {
        watches_.push_back(seat.onChanged([this] { reopen(); }));
        watches_.push_back(connection.onGlobalGone([this](const WaylandGlobal& global) {
            if (global.interface == protocol_) {
                reopen();
            }
        }));
        for (const char* interface : {ExtDataControl::interface().name, WlrDataControl::interface().name}) {
            watches_.push_back(connection.onGlobal(interface, [this](const WaylandGlobal&) {
                if (!isAlive()) {
                    reopen();
                }
            }));
        }
    }

    void offer(WaylandSelection selection, Source source) override {
        if (device_) {
            device_->offer(selection, std::move(source));
        } else if (source.cancelled) {
            source.cancelled();
        }
    }
    void clear(WaylandSelection selection) override {
        if (device_) {
            device_->clear(selection);
        }
    }
    [[nodiscard]] std::shared_ptr<ForeignOffer> current(WaylandSelection selection) const override {
        return device_ ? device_->current(selection) : nullptr;
    }
    [[nodiscard]] Handle onChange(std::function<void(WaylandSelection)> changed) override {
        return changed_.subscribe(std::move(changed));
    }
    [[nodiscard]] bool isAlive() const override { return device_ && device_->isAlive(); }
    [[nodiscard]] bool hasPrimary() const override { return device_ && device_->hasPrimary(); }

 private:
    void reopen() {
        if (device_) {
            device_->lose();
        }
        device_.reset();
        if (seat_.seat() != nullptr) {
            open(seat_.seat());
        }
        if (device_) {
            inner_ = device_->onChange([this](WaylandSelection selection) { changed_.emit(selection); });
        }
        changed_.emit(WaylandSelection::clipboard);
        changed_.emit(WaylandSelection::primary);
    }
    void open(wl_seat* seat) {
        device_ = openBy<ExtDataControl>(connection_, seat);
        protocol_ = ExtDataControl::interface().name;
        if (!device_) {
            device_ = openBy<WlrDataControl>(connection_, seat);
            protocol_ = WlrDataControl::interface().name;
        }
    }

    WaylandConnection& connection_;
    WaylandSeat& seat_;
    std::unique_ptr<EndingDevice> device_;
    QByteArray protocol_;
    Signal<WaylandSelection> changed_;
    Handle inner_;
    std::vector<Handle> watches_;
};

} // namespace

std::unique_ptr<DataControlDevice> DataControlDevice::open(WaylandConnection& connection, WaylandSeat& seat) {
    const bool isOffered = connection.offers(ExtDataControl::interface().name) ||
                           connection.offers(WlrDataControl::interface().name);
    return isOffered ? std::make_unique<LastingDevice>(connection, seat) : nullptr;
}

} // namespace lorvane
