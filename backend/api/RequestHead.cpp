// SPDX-License-Identifier: GPL-3.0-or-later
#include "api/RequestHead.h"

#include "api/ClientAddress.h"
#include "api/HttpText.h"

namespace lorvane::backend {

Request requestOf(const RequestHead& head, const TrustedProxies& proxies) {
    const auto mark = head.target.find('?');
    Request request;
    request.contentType = mediaType(head.contentType);
    request.takeId = usableHeaderWord(head.takeId);
    request.platform = lowerCase(usableHeaderWord(head.platform));
    if (mark != std::string_view::npos)
        request.query = head.target.substr(mark + 1);
    request.client = proxies.clientOf(head.peer, head.forwarded);
    return request;
}

} // namespace lorvane::backend
