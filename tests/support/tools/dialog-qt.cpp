// SPDX-License-Identifier: GPL-3.0-or-later
// A dialog with one line whose default button Return presses; it ends with status 3 when the button is
// pressed.
#include <QApplication>
#include <QDialog>
#include <QDialogButtonBox>
#include <QLineEdit>
#include <QVBoxLayout>

int main(int argc, char** argv) {
    const QApplication application(argc, argv);
    constexpr int pressed = 3;
    QDialog dialog;
    QVBoxLayout layout(&dialog);
    QLineEdit line(&dialog);
    QDialogButtonBox buttons(QDialogButtonBox::Ok, &dialog);
    layout.addWidget(&line);
    layout.addWidget(&buttons);
    QObject::connect(&buttons, &QDialogButtonBox::accepted, [] { QApplication::exit(pressed); });
    dialog.setWindowTitle(QStringLiteral("One line"));
    dialog.show();
    return QApplication::exec();
}
