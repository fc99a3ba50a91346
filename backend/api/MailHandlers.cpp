// SPDX-License-Identifier: GPL-3.0-or-later
#include "api/Handlers.h"
#include "api/JsonBody.h"
#include "language/PersonName.h"
#include "mail/Address.h"
#include "mail/Mailer.h"

namespace lorvane::backend {

namespace {

constexpr std::size_t longestAddress = 254;
constexpr std::size_t longestName = 240; // 60 signs of UTF-8
constexpr std::size_t longestTopic = 64;
constexpr std::size_t longestMessage = 32 * 1024;
constexpr std::size_t mostMeta = 32;

Letter invitation(const Services& services, const std::string& to, const std::string& name,
                  const std::string& code) {
    const auto who = name.empty() ? std::string("A friend") : name;
    Letter letter{services.options.mailFrom, to, {}, who + " invites you to Lorvane", {}};
    letter.text = "Hello,\n\n" + who +
                  " uses Lorvane to turn their voice into clean, ready-to-send text in any "
                  "application, and thinks that you might like it too.\n\n";
    if (!services.options.publicUrl.empty())
        letter.text += "Get it here: " + services.options.publicUrl + "/get?r=" + code + "\n\n";
    letter.text += "The code of this invitation: " + code +
                   "\n\nYou got this one letter because somebody typed in your address; it is on no list.\n";
    return letter;
}

void sendOrRefuse(const Services& services, const Letter& letter, Exchange& exchange) {
    try {
        services.mailer.send(letter);
    } catch (const MailError& error) {
        exchange.note(error.what());
        return refuse(exchange, 503, "mail_unavailable");
    }
    agree(exchange);
}

} // namespace

void handleInvite(const Services& services, const Request& request, Exchange& exchange) {
    const JsonBody body(request.body);
    const auto email = body.text("email", longestAddress);
    auto name = body.optionalText("fromName", longestName).value_or("");
    if (!looksLikeAName(name)) // a stranger reads it: it must not carry a message of its own
        name.clear();
    if (!isMailAddress(email))
        throw BadBody("bad email");
    if (!admitted(services, request, exchange, "invite", services.options.limits.invitations))
        return;
    const auto code = referralCodeOf(services.storage, request.device);
    sendOrRefuse(services, invitation(services, email, name, code), exchange);
}

void handleFeedback(const Services& services, const Request& request, Exchange& exchange) {
    const JsonBody body(request.body);
    const auto topic = body.text("topic", longestTopic);
    const auto message = body.text("message", longestMessage);
    const auto email = body.optionalText("email", longestAddress).value_or("");
    if (message.find_first_not_of(" \t\r\n") == std::string::npos)
        throw BadBody("bad message");
    Letter letter{services.options.mailFrom,
                  services.options.feedbackTo,
                  {},
                  "Feedback: " + topic,
                  message + "\n\n--\n"};
    for (const auto& [key, value] : body.textMap("meta", mostMeta))
        letter.text.append(key).append(": ").append(value).append("\n");
    // An address that cannot be answered to is no reason to lose what somebody has written.
    if (isMailAddress(email))
        letter.replyTo = email;
    else if (!email.empty())
        letter.text += "email, as given: " + email + '\n';
    if (admitted(services, request, exchange, "feedback", services.options.limits.feedback))
        sendOrRefuse(services, letter, exchange);
}

} // namespace lorvane::backend
