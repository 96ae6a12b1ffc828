#include "updater/notes/NotesReader.h"

#include <gtest/gtest.h>

namespace kelo::test {

using updater::NotesFormat;
using updater::notesFormatOf;
using updater::Paragraph;
using updater::ParagraphKind;
using updater::readReleaseNotes;
using updater::ReleaseNotes;
using updater::TextRun;

namespace {

ReleaseNotes html(std::string_view text) {
    return readReleaseNotes(text, NotesFormat::html);
}
ReleaseNotes markdown(std::string_view text) {
    return readReleaseNotes(text, NotesFormat::markdown);
}
ReleaseNotes plain(std::string_view text) {
    return readReleaseNotes(text, NotesFormat::plainText);
}

Paragraph body(std::string text) {
    return {ParagraphKind::body, {TextRun{std::move(text)}}};
}
Paragraph heading(std::string text) {
    return {ParagraphKind::heading, {TextRun{std::move(text)}}};
}
Paragraph item(std::string text) {
    return {ParagraphKind::listItem, {TextRun{std::move(text)}}};
}

} // namespace

TEST(ReleaseNotes, HtmlKeepsItsSimpleFormatting) {
    EXPECT_EQ(html("<h2>News</h2><p>One <b>bold</b> and <em>leaning</em>,\n  <code>code</code>.</p>"
                   "<ul><li>first</li><li>second</li></ul>tail"),
              (ReleaseNotes{heading("News"),
                            {ParagraphKind::body,
                             {{"One ", false, false, false},
                              {"bold ", true, false, false},
                              {"and ", false, false, false},
                              {"leaning", false, true, false},
                              {", ", false, false, false},
                              {"code", false, false, true},
                              {".", false, false, false}}},
                            item("first"),
                            item("second"),
                            body("tail")}));
}

TEST(ReleaseNotes, HtmlLosesEverythingThatIsNoText) {
    EXPECT_EQ(html("<html><head><title>t</title><style>p{}</style></head><body>"
                   "<script>alert(1)</script><p onclick=\"x()\">Hello<img src=\"https://e.com/i\">"
                   "<a href=\"javascript:y()\"> you</a></p><iframe src=\"/x\">z</iframe>"
                   "<!-- secret --></body></html>"),
              ReleaseNotes{body("Hello you")});
}

TEST(ReleaseNotes, HtmlEntitiesAreCharacters) {
    EXPECT_EQ(html("Fish &amp; chips &lt;now&gt; &eacute; &#8364;"),
              ReleaseNotes{body("Fish & chips <now> é €")});
}

TEST(ReleaseNotes, BrokenHtmlIsReadAsFarAsItGoes) {
    EXPECT_EQ(html("<p>one<p>two<b>").size(), 2u);
    EXPECT_EQ(html("<<<>>>&&& \xff\xfe").size() <= 1, true);
    EXPECT_TRUE(html("").empty());
    EXPECT_TRUE(html("<p></p><br><ul><li> </li></ul>").empty());
}

TEST(ReleaseNotes, DeeplyNestedHtmlDoesNotExhaustTheStack) {
    std::string text;
    for (int i = 0; i < 200000; ++i)
        text += "<b>";
    EXPECT_NO_FATAL_FAILURE(html(text + "x"));
}

TEST(ReleaseNotes, MarkdownKeepsItsSimpleFormatting) {
    EXPECT_EQ(markdown("# News #\nOne **bold** and *leaning*,\nstill `a*b`.\n\n- first\n* second\n"
                       "12. third\n\nSee [the page](https://e.com/)."),
              (ReleaseNotes{heading("News"),
                            {ParagraphKind::body,
                             {{"One ", false, false, false},
                              {"bold ", true, false, false},
                              {"and ", false, false, false},
                              {"leaning", false, true, false},
                              {", still ", false, false, false},
                              {"a*b", false, false, true},
                              {".", false, false, false}}},
                            item("first"),
                            item("second"),
                            item("third"),
                            {ParagraphKind::body,
                             {{"See "}, {.text = "the page", .link = "https://e.com/"}, {"."}}}}));
}

TEST(ReleaseNotes, MarkdownWithoutAnEndStaysAsItIs) {
    EXPECT_EQ(markdown("2 * 3 = 6 and **half"), ReleaseNotes{body("2 * 3 = 6 and **half")});
    EXPECT_EQ(markdown("[no link] [a](b"), ReleaseNotes{body("[no link] [a](b")});
    EXPECT_EQ(markdown("#hash snake_case_name"), ReleaseNotes{body("#hash snake_case_name")});
}

TEST(ReleaseNotes, LinksKeepTheirAddresses) {
    const ReleaseNotes expected{
        {ParagraphKind::body, {{"See "}, {.text = "the page", .link = "https://e.com/"}, {"."}}}};
    EXPECT_EQ(markdown("See [the page](https://e.com/)."), expected);
    EXPECT_EQ(html("See <a href='https://e.com/'>the page</a>."), expected);
    EXPECT_EQ(html("See <a href='hTTps://e.com/'>the page</a>."), expected);
    EXPECT_EQ(markdown("<https://e.com/a>"),
              (ReleaseNotes{{ParagraphKind::body,
                             {{.text = "https://e.com/a", .link = "https://e.com/a"}}}}));
}

TEST(ReleaseNotes, LinkThatIsNoCompleteAddressOfHttpsIsText) {
    for (const char* address : {"http://e.com/", "javascript:y()", "/notes", "#top",
                                "file:///etc/passwd", "mailto:a@e.com", "https:", "", "//e.com/"})
        EXPECT_EQ(html("<a href=\"" + std::string(address) + "\">words</a>"),
                  ReleaseNotes{body("words")})
            << address;
}

TEST(ReleaseNotes, FencedCodeKeepsItsLines) {
    const ReleaseNotes expected{
        body("Type:"),
        {ParagraphKind::code, {{.text = "if (x)\n    y = *z;", .code = true}}},
        body("Done.")};
    EXPECT_EQ(markdown("Type:\n\n```cpp\nif (x)\n    y = *z;\n```\nDone."), expected);
    EXPECT_EQ(html("Type:<pre><code>if (x)\r\n    y = *z;\n\n</code></pre>Done."), expected);
    EXPECT_TRUE(markdown("```\n\n```").empty());
}

TEST(ReleaseNotes, EmphasisIsReadInBothSpellings) {
    EXPECT_EQ(markdown("_leaning_ __bold__ *__both__* snake_case"),
              (ReleaseNotes{{ParagraphKind::body,
                             {{.text = "leaning ", .emphasized = true},
                              {.text = "bold ", .strong = true},
                              {.text = "both ", .strong = true, .emphasized = true},
                              {"snake_case"}}}}));
}

TEST(ReleaseNotes, ItemsOfALooseListAreItems) {
    EXPECT_EQ(markdown("- first\n\n- second\n\n  more"),
              (ReleaseNotes{item("first"), item("second"), body("more")}));
}

TEST(ReleaseNotes, DirectionMarksAreLeftOut) {
    const ReleaseNotes expected{body("Not evil")};
    EXPECT_EQ(plain("Not \u202Eevil\u2066"), expected);
    EXPECT_EQ(markdown("Not \u202Eevil&#x200F;"), expected);
    EXPECT_EQ(html("Not &#x202E;evil\u061C"), expected);
}

TEST(ReleaseNotes, MegabyteOfBracketsIsReadInTime) {
    for (const char* mark : {"[", "*", "_", "`", "<", "> ", "![", "[a](", "- "}) {
        std::string text;
        while (text.size() < updater::notesLimit)
            text += mark;
        EXPECT_NO_FATAL_FAILURE(markdown(text)) << mark;
    }
}

TEST(ReleaseNotes, PlainTextIsTakenByTheLine) {
    EXPECT_EQ(plain("One <b>\r\n\r\n  two\tthree\n"),
              (ReleaseNotes{body("One <b>"), body("two three")}));
}

TEST(ReleaseNotes, TextThatIsNoUtf8GivesNone) {
    EXPECT_TRUE(plain("caf\xe9").empty());
    EXPECT_TRUE(markdown("caf\xe9").empty());
    // The first two bytes say that this page is UTF-16.
    EXPECT_TRUE(html(std::string("\xFF\xFE<\0p\0>\0a\0", 10)).empty());
}

TEST(ReleaseNotes, ControlCharactersAreLeftOut) {
    EXPECT_EQ(plain(std::string("a\x1b[31mb\x07\0c", 10)), ReleaseNotes{body("a[31mbc")});
    EXPECT_EQ(plain("a\vb\fc"), ReleaseNotes{body("a b c")});
    EXPECT_EQ(html("<pre>a\vb\r\n\tc</pre>"), (ReleaseNotes{{ParagraphKind::code, {{"ab\n\tc"}}}}));
}

TEST(ReleaseNotes, VeryLongNotesAreCut) {
    std::string text;
    for (int i = 0; i < 100000; ++i)
        text += "é";
    const ReleaseNotes notes = plain(text);
    ASSERT_EQ(notes.size(), 1u);
    EXPECT_LT(notes[0].runs[0].text.size(), 70000u);
    EXPECT_TRUE(notes[0].runs[0].text.ends_with("é…"));
}

TEST(ReleaseNotes, FormatIsThatOfTheFileName) {
    const auto of = [](const char* url) { return notesFormatOf(*Url::parse(url)); };
    EXPECT_EQ(of("https://e.com/1.1.md"), NotesFormat::markdown);
    EXPECT_EQ(of("https://e.com/1.1.txt?x=.md"), NotesFormat::plainText);
    EXPECT_EQ(of("https://e.com/1.1.html"), NotesFormat::html);
    EXPECT_EQ(of("https://e.com/"), NotesFormat::html);
}

} // namespace kelo::test
