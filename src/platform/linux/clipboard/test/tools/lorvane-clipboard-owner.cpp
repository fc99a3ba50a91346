// SPDX-License-Identifier: GPL-3.0-or-later
// Another program that has copied something: lorvane-clipboard-owner [--selection] TYPE=FILE...
// Owns the clipboard (or the selection of the middle mouse button) through the toolkit until it is ended;
// says "ready" when it does. The type "image" puts an image in as an application does, with all the types
// that the toolkit makes of it.
#include <QClipboard>
#include <QFile>
#include <QGuiApplication>
#include <QImage>
#include <QMimeData>

#include <cstdio>
#include <memory>

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "xcb");
    const QGuiApplication application(argc, argv);
    auto data = std::make_unique<QMimeData>();
    auto mode = QClipboard::Clipboard;
    const auto arguments = QCoreApplication::arguments().mid(1);
    for (const auto& argument : arguments) {
        if (argument == QLatin1String("--selection")) {
            mode = QClipboard::Selection;
            continue;
        }
        QFile file(argument.section(QLatin1Char('='), -1));
        if (!file.open(QIODevice::ReadOnly)) {
            return 2;
        }
        const QByteArray bytes = file.readAll();
        const QString type = argument.section(QLatin1Char('='), 0, -2);
        if (type == QLatin1String("image")) {
            data->setImageData(QImage::fromData(bytes));
        } else {
            data->setData(type, bytes);
        }
    }
    QGuiApplication::clipboard()->setMimeData(data.release(), mode);
    std::puts("ready");
    std::fflush(stdout);
    return QGuiApplication::exec();
}
