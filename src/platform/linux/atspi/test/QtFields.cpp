// SPDX-License-Identifier: GPL-3.0-or-later
// A window with a text area, a line and a password, worked by lines on standard input; see gtk-fields for the
// lines.
#include <QApplication>
#include <QFile>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QSocketNotifier>
#include <QVBoxLayout>

#include <unistd.h>

namespace {

struct Fields {
    QPlainTextEdit* area;
    QLineEdit* line;
    QLineEdit* password;
};

void load(const Fields& fields, const QString& path) {
    QFile file(path);
    if (file.open(QIODevice::ReadOnly)) {
        fields.area->setPlainText(QString::fromUtf8(file.readAll()));
    }
}

void select(const Fields& fields, int from, int to) {
    QTextCursor cursor = fields.area->textCursor();
    cursor.setPosition(from);
    cursor.setPosition(to, QTextCursor::KeepAnchor);
    fields.area->setTextCursor(cursor);
}

void obey(const Fields& fields, const QString& order) {
    const QString word = order.section(QLatin1Char(' '), 0, 0);
    const QString rest = order.section(QLatin1Char(' '), 1);
    if (word == QLatin1String("load")) {
        load(fields, rest);
    } else if (word == QLatin1String("caret")) {
        select(fields, rest.toInt(), rest.toInt());
    } else if (word == QLatin1String("select")) {
        select(fields, rest.section(QLatin1Char(' '), 0, 0).toInt(),
               rest.section(QLatin1Char(' '), 1).toInt());
    } else if (word == QLatin1String("insert")) {
        fields.area->insertPlainText(rest);
    } else if (word == QLatin1String("focus")) {
        QWidget* const all[] = {fields.area, fields.line, fields.password};
        all[rest.toInt()]->setFocus();
    }
}

} // namespace

int main(int argc, char** argv) {
    const QApplication application(argc, argv);
    QWidget window;
    QVBoxLayout layout(&window);
    const Fields fields{new QPlainTextEdit(&window), new QLineEdit(&window), new QLineEdit(&window)};
    fields.password->setEchoMode(QLineEdit::Password);
    fields.password->setText(QStringLiteral("secret"));
    layout.addWidget(fields.area);
    layout.addWidget(fields.line);
    layout.addWidget(fields.password);
    QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&input, &QSocketNotifier::activated, &window, [&fields] {
        char orders[65536];
        const auto size = ::read(STDIN_FILENO, orders, sizeof orders);
        if (size <= 0) {
            QApplication::quit();
            return;
        }
        const auto lines = QString::fromUtf8(orders, size).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
        for (const auto& line : lines) {
            obey(fields, line);
        }
    });
    window.setWindowTitle(QStringLiteral("Qt fields"));
    window.show();
    return QApplication::exec();
}
