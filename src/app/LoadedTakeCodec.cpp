// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/LoadedTakeCodec.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>

#include <dlfcn.h>

namespace lorvane {

QString LoadedTakeCodec::standardModule() {
    const QDir folder(QCoreApplication::applicationDirPath());
    const QString built = folder.filePath(QStringLiteral("lorvane-codec.so"));
    return QFile::exists(built) ? built
                                : folder.filePath(QStringLiteral(LORVANE_MODULE_FOLDER "/lorvane-codec.so"));
}

TakeCodec* LoadedTakeCodec::loaded() {
    if (codec_ != nullptr) {
        return codec_;
    }
    handle_ = dlopen(QFile::encodeName(module_).constData(), RTLD_NOW | RTLD_LOCAL);
    if (handle_ != nullptr) {
        const auto make = reinterpret_cast<TakeCodec* (*)()>(dlsym(handle_, "lorvaneTakeCodec"));
        codec_ = make == nullptr ? nullptr : make();
    }
    if (codec_ == nullptr) {
        log_.diagLog(
            QStringLiteral("[lorvane-codec] cannot be loaded: %1").arg(QString::fromLocal8Bit(dlerror())));
    }
    return codec_;
}

Result<void, QString> LoadedTakeCodec::writeFile(const QByteArray& samples, const TakeSettings& settings,
                                                 const QString& path) {
    const std::lock_guard lock(mutex_);
    TakeCodec* const codec = loaded();
    if (codec == nullptr) {
        return failure(QStringLiteral("no codec"));
    }
    auto written = codec->writeFile(samples, settings, path);
    // A copy of the words, since the module may keep them among its own constants.
    return written ? written : failure(QString(written.error().constData(), written.error().size()));
}

void LoadedTakeCodec::load() {
    const std::lock_guard lock(mutex_);
    (void)loaded();
}

void LoadedTakeCodec::letGo() {
    const std::unique_lock lock(mutex_, std::try_to_lock);
    if (lock.owns_lock() && handle_ != nullptr) {
        codec_ = nullptr;
        dlclose(handle_);
        handle_ = nullptr;
    }
}

bool LoadedTakeCodec::isLoaded() const {
    const std::lock_guard lock(mutex_);
    return codec_ != nullptr;
}

} // namespace lorvane
