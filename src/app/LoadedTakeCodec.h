// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "audio/TakeCodec.h"
#include "base/DiagnosticLog.h"

#include <mutex>

namespace lorvane {

/// The codec of the module "lorvane-codec", whose libraries would take a third of the resting program's
/// memory. It is loaded when it is needed, or a little earlier, and let go when asked. Any thread.
class LoadedTakeCodec final : public TakeCodec {
 public:
    LoadedTakeCodec(QString module, DiagnosticLog& log) : module_(std::move(module)), log_(log) {}
    ~LoadedTakeCodec() override { letGo(); }
    LoadedTakeCodec(const LoadedTakeCodec&) = delete;
    LoadedTakeCodec& operator=(const LoadedTakeCodec&) = delete;

    /// Beside the program, as it is built, or in its folder of libraries, as it is installed.
    [[nodiscard]] static QString standardModule();

    [[nodiscard]] Result<void, QString> writeFile(const QByteArray& samples, const TakeSettings& settings,
                                                  const QString& path) override;
    /// Takes some 30 ms when it is not loaded.
    void load();
    /// Unless a file is being written.
    void letGo();
    [[nodiscard]] bool isLoaded() const;

 private:
    [[nodiscard]] TakeCodec* loaded();

    const QString module_;
    DiagnosticLog& log_;
    mutable std::mutex mutex_;
    void* handle_ = nullptr;
    TakeCodec* codec_ = nullptr;
};

} // namespace lorvane
