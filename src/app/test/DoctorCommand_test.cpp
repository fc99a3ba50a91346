// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/DoctorCommand.h"

#include <QByteArray>
#include <QHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <gtest/gtest.h>

namespace lorvane {

namespace {

/// For as long as it lives the process has none of what a desktop offers.
class NoDesktop {
 public:
    NoDesktop() {
        set("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nowhere");
        set("PULSE_SERVER", "unix:/nowhere");
        set("LORVANE_BACKEND_URL", "nowhere");
        for (const char* const name : {"DISPLAY", "WAYLAND_DISPLAY", "XDG_SESSION_TYPE"}) {
            set(name, QByteArray());
        }
    }
    ~NoDesktop() {
        for (auto it = before_.constBegin(); it != before_.constEnd(); ++it) {
            qputenv(it.key(), it.value());
        }
    }
    NoDesktop(const NoDesktop&) = delete;
    NoDesktop& operator=(const NoDesktop&) = delete;

 private:
    void set(const char* name, const QByteArray& value) {
        before_.insert(name, qgetenv(name));
        qputenv(name, value);
    }
    QHash<const char*, QByteArray> before_;
};

// The first use of the session bus in a process decides, so this is the only test that looks at it.
TEST(DoctorCommand, WhereThereIsNoDesktopItEndsAndSaysSo) {
    const NoDesktop nothing;
    ::testing::internal::CaptureStdout();
    const int status = runDoctor(true);
    const std::string printed = ::testing::internal::GetCapturedStdout();
    EXPECT_EQ(status, 1);
    const QJsonObject report = QJsonDocument::fromJson(QByteArray::fromStdString(printed)).object();
    EXPECT_EQ(report.value("dictationWorks"), QJsonValue(false)) << printed;
    QHash<QString, QString> found;
    for (const auto& line : report.value("checks").toArray()) {
        found.insert(line.toObject().value("id").toString(), line.toObject().value("status").toString());
    }
    for (const char* const id :
         {"bus", "session", "keys", "paste", "accessibility", "microphone", "backend"}) {
        EXPECT_EQ(found.value(id), "fail") << id << "\n" << printed;
    }
    for (const char* const id : {"keys-store", "tray"}) {
        EXPECT_EQ(found.value(id), "warn") << id << "\n" << printed;
    }
}

} // namespace

} // namespace lorvane
