// SPDX-License-Identifier: GPL-3.0-or-later
#include "language/ChatStream.h"

#include <gtest/gtest.h>
#include <random>

using namespace lorvane::backend;

namespace {

struct Heard {
    ChatEnd end = ChatEnd::failed;
    std::string text;
    bool operator==(const Heard&) const = default;
};

// The body in pieces that end where `cuts` say.
Heard read(const std::string& body, const std::vector<std::size_t>& cuts = {}) {
    Heard heard;
    ChatStream stream([&](std::string_view text) {
        heard.text += text;
        return true;
    });
    std::size_t begin = 0;
    for (const auto cut : cuts) {
        stream.feed(std::string_view(body).substr(begin, cut - begin));
        begin = cut;
    }
    stream.feed(std::string_view(body).substr(begin));
    heard.end = stream.finish();
    return heard;
}

std::string chunk(const std::string& text) {
    return R"(data: {"object":"chat.completion.chunk","choices":[{"index":0,"delta":{"content":")" + text +
           "\"},\"finish_reason\":null}]}\n\n";
}

std::string finish(const std::string& reason = "stop") {
    return R"(data: {"choices":[{"index":0,"delta":{},"finish_reason":")" + reason + "\"}]}\n\n";
}

const std::string done = "data: [DONE]\n\n";

Heard complete(const std::string& text) { return {ChatEnd::complete, text}; }

} // namespace

TEST(ChatStream, TokensComeInTheirOrderUntilTheReasonToFinish) {
    EXPECT_EQ(read(chunk("Hello") + chunk(" there") + chunk(".") + finish() + done),
              complete("Hello there."));
    EXPECT_EQ(read(chunk("Hello") + finish()), complete("Hello")) << "some end without [DONE]";
}

TEST(ChatStream, EmptyChoicesFirstAndLastAreNoEnd) {
    EXPECT_EQ(read(R"(data: {"choices":[],"prompt_filter_results":[{"index":0}]})"
                   "\n\n" +
                   chunk("A") + finish() + R"(data: {"choices":[],"usage":{"total_tokens":3}})" + "\n\n" +
                   done),
              complete("A"));
}

TEST(ChatStream, NullAbsentAndEmptyContentSayNothing) {
    EXPECT_EQ(read(R"(data: {"choices":[{"delta":{"role":"assistant","content":null}}]})"
                   "\n\n"
                   R"(data: {"choices":[{"delta":{"role":"assistant"}}]})"
                   "\n\n"
                   R"(data: {"choices":[{"delta":{"content":""},"finish_reason":""}]})"
                   "\n\n"
                   R"(data: {"choices":[{"delta":null}],"error":null})"
                   "\n\n" +
                   chunk("A") + finish()),
              complete("A"));
}

TEST(ChatStream, EveryKindOfLineEndAndMissingBlanksAreRead) {
    EXPECT_EQ(read("data:{\"choices\":[{\"delta\":{\"content\":\"A\"}}]}\r\n\r\n"
                   "data:{\"choices\":[{\"delta\":{\"content\":\"B\"},\"finish_reason\":\"stop\"}]}\r\n\r\n"),
              complete("AB"));
    EXPECT_EQ(read("data: {\"choices\":[{\"delta\":{\"content\":\"A\"},\"finish_reason\":\"stop\"}]}\r\r"),
              complete("A"));
    EXPECT_EQ(read("\xEF\xBB\xBF" + chunk("A") + finish()), complete("A"));
    EXPECT_EQ(read("data: {\"choices\":[{\"delta\":{\"content\":\"A\"},\"finish_reason\":\"stop\"}]}"),
              complete("A"))
        << "a last line without its end";
}

TEST(ChatStream, CommentsAndUnknownFieldsKeepTheConnectionAlive) {
    EXPECT_EQ(read(":\n\n: ping\n\n" + chunk("A") + ":\n\nid: 7\nretry: 10\n\nevent: message\n" + finish()),
              complete("A"));
}

TEST(ChatStream, AnErrorInAnyShapeIsAFailure) {
    for (const std::string error :
         {"data: {\"error\":{\"message\":\"overloaded\"}}\n\n", "error: {\"code\":500,\"message\":\"x\"}\n\n",
          "{\"error\":{\"message\":\"x\"}}\n", "event: error\ndata: {\"message\":\"x\"}\n\n",
          "data: {\"choices\":[{\"delta\":{},\"finish_reason\":\"error\"}],\"error\":{\"code\":502}}\n\n",
          "data: {\"error\":\"text\"}\n\n"}) {
        EXPECT_EQ(read(chunk("A") + error + done).end, ChatEnd::failed) << error;
        EXPECT_EQ(read(error).end, ChatEnd::failed) << error;
    }
}

TEST(ChatStream, AnEndWithoutAReasonIsAFailure) {
    EXPECT_EQ(read("").end, ChatEnd::failed);
    EXPECT_EQ(read(chunk("A")).end, ChatEnd::failed);
    EXPECT_EQ(read(chunk("A") + done).end, ChatEnd::failed);
    EXPECT_EQ(read(R"(data: {"model":"x","created_at":"y","done":false})"
                   "\n\n")
                  .end,
              ChatEnd::failed);
    EXPECT_EQ(read(chunk("A") + "data: {\"choices\":[{\"del").end, ChatEnd::failed);
}

TEST(ChatStream, LengthFiltersAndToolsAreNoCompleteAnswer) {
    EXPECT_EQ(read(chunk("A") + finish("length")).end, ChatEnd::truncated);
    EXPECT_EQ(read(chunk("A") + finish("content_filter")).end, ChatEnd::refused);
    EXPECT_EQ(read(chunk("A") + finish("tool_calls")).end, ChatEnd::failed);
    EXPECT_EQ(read(R"(data: {"choices":[{"delta":{"refusal":"I can not"}}]})"
                   "\n\n" +
                   finish())
                  .end,
              ChatEnd::refused);
}

TEST(ChatStream, AServerThatDoesNotStreamIsReadToo) {
    EXPECT_EQ(
        read(R"({"choices":[{"message":{"role":"assistant","content":"Hello."},"finish_reason":"stop"}]})"),
        complete("Hello."));
    EXPECT_EQ(
        read("\n{\n \"choices\": [{\"message\":{\"content\":\"A\"},\n\"finish_reason\":\"length\"}]}").end,
        ChatEnd::truncated);
    EXPECT_EQ(read(R"({"detail":"nothing here"})").end, ChatEnd::failed);
    EXPECT_EQ(read("{\"choices\":").end, ChatEnd::failed);
}

TEST(ChatStream, ThoughtsAreLeftOut) {
    EXPECT_EQ(read(chunk("<th") + chunk("ink>I wonder </thi") + chunk("nk>Hello") + chunk(".") + finish()),
              complete("Hello."));
    EXPECT_EQ(read(R"(data: {"choices":[{"delta":{"reasoning_content":"hm","reasoning":"hm"}}]})"
                   "\n\n" +
                   chunk("A") + finish()),
              complete("A"));
    EXPECT_EQ(read(chunk("<think>on and on") + finish()).end, ChatEnd::failed);
    EXPECT_EQ(read(chunk("a <think> b") + finish()), complete("a <think> b")) << "only what leads the answer";
    EXPECT_EQ(read(chunk("<thin ice>") + finish()), complete("<thin ice>"));
    EXPECT_EQ(read(chunk("<th") + finish()), complete("<th"));
}

TEST(ChatStream, OtherChoicesAndOtherTypesAreNotTaken) {
    EXPECT_EQ(
        read(R"(data: {"choices":[{"index":1,"delta":{"content":"B"}},{"index":0,"delta":{"content":"A"}}]})"
             "\n\n" +
             finish()),
        complete("A"));
    for (const std::string odd :
         {R"({"choices":7})", R"({"choices":[7]})", R"({"choices":[{"delta":{"content":7}}]})",
          R"({"choices":[{"finish_reason":7}]})", R"([1])", "nonsense"})
        EXPECT_EQ(read("data: " + odd + "\n\n" + finish()).end, ChatEnd::failed) << odd;
    EXPECT_EQ(read(R"(data: {"choices":[{"delta":{"content":[{"type":"text","text":"A"},{"type":"x"}]}}]})"
                   "\n\n" +
                   finish()),
              complete("A"));
}

TEST(ChatStream, AnEventsDataMayComeInSeveralLines) {
    EXPECT_EQ(read("data: {\"choices\":[{\"delta\":\ndata: {\"content\":\"A\"}}]}\n\n" + finish()),
              complete("A"));
    EXPECT_EQ(read("data: {\"choices\":\n\n" + finish()).end, ChatEnd::failed);
}

TEST(ChatStream, GiantLinesAndObjectsAreBounded) {
    ChatStream lines([](std::string_view) { return true; });
    const std::string piece(64 * 1024, 'x');
    bool more = lines.feed("data: ");
    int pieces = 0;
    for (; more && pieces < 1000; ++pieces)
        more = lines.feed(piece);
    EXPECT_LE(pieces, 17);
    EXPECT_EQ(lines.finish(), ChatEnd::failed);
    ChatStream object([](std::string_view) { return true; });
    more = object.feed("{");
    for (pieces = 0; more && pieces < 1000; ++pieces)
        more = object.feed(piece);
    EXPECT_LE(pieces, 65);
    EXPECT_EQ(object.finish(), ChatEnd::failed);
}

TEST(ChatStream, WhoWantsNoMoreGetsNoMore) {
    int heard = 0;
    ChatStream stream([&](std::string_view) { return ++heard < 2; });
    EXPECT_FALSE(stream.feed(chunk("A") + chunk("B") + chunk("C") + finish()));
    EXPECT_EQ(heard, 2);
    EXPECT_EQ(stream.finish(), ChatEnd::unwanted);
}

// Bytes come as they like: in the middle of a character, of a line end, of a field's name.
TEST(ChatStream, HoweverTheBodyIsCutTheTextIsTheSame) {
    const std::string body =
        ": hello\r\n\r\n" + chunk("<think>gr\xC3\xBC\xC3\x9F</think>") + chunk("\\u00e4\xE2\x82\xAC") +
        "data:{\"choices\":[{\"delta\":{\"content\":\" \xF0\x9F\x98\x80\"}}]}\r\n\r\n" + finish() + done;
    const auto whole = read(body);
    EXPECT_EQ(whole, complete("\xC3\xA4\xE2\x82\xAC \xF0\x9F\x98\x80"));
    for (std::size_t cut = 0; cut <= body.size(); ++cut)
        EXPECT_EQ(read(body, {cut}), whole) << cut;
    std::mt19937 random(3);
    for (int round = 0; round < 500; ++round) {
        std::vector<std::size_t> cuts;
        for (std::size_t at = 0; (at += 1 + random() % 9) < body.size();)
            cuts.push_back(at);
        EXPECT_EQ(read(body, cuts), whole);
    }
}
