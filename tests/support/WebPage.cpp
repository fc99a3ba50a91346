// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/WebPage.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>

namespace lorvane {

namespace {

// %1: the field's element, %2: its text as a JavaScript array of one, %3: whether it is deaf.
const QString page = QStringLiteral(R"(<!doctype html>
<meta charset="utf-8">
<title>One text</title>
<form id="form">%1<button>Send</button></form>
<script>
const field = document.getElementById('field');
let sent = 0;
let keys = 0;
let told = '';
let telling = false;
field.value = %2[0];
field.setSelectionRange(field.value.length, field.value.length);
field.focus();
document.getElementById('form').addEventListener('submit', event => { ++sent; event.preventDefault(); });
field.addEventListener('beforeinput', event => {
  if (%3 && event.inputType === 'insertText') event.preventDefault();
});
document.addEventListener('keydown', () => { ++keys; });
const tell = async () => {
  const now = JSON.stringify({
    text: field.value, sent, keys, focused: document.hasFocus() && document.activeElement === field});
  if (telling || now === told) return;
  telling = true;
  try {
    await fetch('/report', {method: 'POST', body: now});
    told = now;
  } finally {
    telling = false;
  }
};
setInterval(tell, 30);
tell();
</script>
)");

const QString area = QStringLiteral(R"(<textarea id="field" rows="25" cols="100" autofocus></textarea>)");
const QString line = QStringLiteral(R"(<input id="field" size="100" autofocus>)");

} // namespace

WebPage::WebPage(const QString& text, Kind kind) {
    // "<" is written so that the text cannot end the script.
    const auto array = QJsonDocument(QJsonArray{text}).toJson(QJsonDocument::Compact).replace("<", "\\u003c");
    auto reply =
        ScriptedReply::body(page.arg(kind == Kind::line ? line : area, QString::fromUtf8(array),
                                     kind == Kind::deaf ? QStringLiteral("true") : QStringLiteral("false"))
                                .toUtf8());
    reply.headers = {{"Content-Type", "text/html; charset=utf-8"}};
    server_.script("/", reply);
    server_.script(reportPath, ScriptedReply::body("ok"));
}

QJsonObject WebPage::report() const {
    const auto request = server_.lastRequest(reportPath);
    return request ? QJsonDocument::fromJson(request->body).object() : QJsonObject();
}

} // namespace lorvane
