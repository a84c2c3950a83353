// Mail headers in any language (RFC 2047): what goes out and what is read.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "net/mimewords.h"

TEST(MimeWords, AnAsciiSubjectGoesAsItStands) {
    EXPECT_EQ(EncodeHeaderWords("Greetings, 12.50"), "Greetings, 12.50");
    EXPECT_EQ(DecodeHeaderWords("Greetings =? not a word"), "Greetings =? not a word");
}

TEST(MimeWords, OtherSubjectsGoAsShortWordsThatEachHoldWholeCharacters) {
    // "Grüße aus Zürich – Δ – 東京 – 😀", 47 bytes of UTF-8: two words.
    const std::string subject =
        "Gr\xC3\xBC\xC3\x9F" "e aus Z\xC3\xBCrich \xE2\x80\x93 \xCE\x94 \xE2\x80\x93 \xE6\x9D\xB1\xE4\xBA\xAC \xE2\x80\x93 "
        "\xF0\x9F\x98\x80";
    const std::string sent = EncodeHeaderWords(subject);
    EXPECT_EQ(sent.rfind("=?UTF-8?B?", 0), 0u) << sent;
    size_t words = 0;
    for (size_t at = 0; at != std::string::npos; at = sent.find("\r\n ", at + 1)) {
        const size_t start = sent.find("=?", at);
        const size_t end = sent.find("?=", start + 10);
        ASSERT_NE(end, std::string::npos);
        EXPECT_LE(end + 2 - start, 75u);
        // Each word decodes to well-formed text of its own.
        const std::string alone = DecodeHeaderWords(sent.substr(start, end + 2 - start));
        EXPECT_EQ(alone.find("\xEF\xBF\xBD"), std::string::npos) << alone;
        words++;
    }
    EXPECT_EQ(words, 2u);
    EXPECT_EQ(DecodeHeaderWords(sent), subject);
}

TEST(MimeWords, WordsOfOtherMailersAreRead) {
    EXPECT_EQ(DecodeHeaderWords("Re: =?ISO-8859-1?Q?Gr=FC=DFe_aus?= Z\xC3\xBCrich"),
              "Re: Gr\xC3\xBC\xC3\x9F" "e aus Z\xC3\xBCrich");
    EXPECT_EQ(DecodeHeaderWords("=?utf-8?q?=C3=98deg=C3=A5rd?= =?UTF-8?B?IOadseS6rA==?="),
              "\xC3\x98" "deg\xC3\xA5rd \xE6\x9D\xB1\xE4\xBA\xAC");
}

TEST(MimeWords, NamesOutsideAsciiAreEncodedWordsAndAddressesStayPlain) {
    // "Ødegård" and "東京"
    const std::string odegard = "\xC3\x98" "deg\xC3\xA5rd", tokyo = "\xE6\x9D\xB1\xE4\xBA\xAC";
    struct Case {
        std::string typed, sent;
    } cases[] = {
        {"ada@example.test", "ada@example.test"},
        {"Ada Lovelace <ada@example.test>, bob@example.test", "Ada Lovelace <ada@example.test>, bob@example.test"},
        {odegard + " <robot@example.test>", EncodeHeaderWords(odegard) + " <robot@example.test>"},
        {"\"" + odegard + "\" <robot@example.test>", EncodeHeaderWords(odegard) + " <robot@example.test>"},
        {"ada@example.test; " + tokyo + " Team <team@example.test>",
         "ada@example.test; " + EncodeHeaderWords(tokyo + " Team") + " <team@example.test>"},
    };
    for (const Case& c : cases) {
        const std::string sent = EncodeAddressHeader(c.typed);
        EXPECT_EQ(sent, c.sent) << c.typed;
        for (char ch : sent) EXPECT_LT((unsigned char)ch, 0x80) << sent;
    }
    EXPECT_EQ(DecodeHeaderWords(EncodeAddressHeader(odegard + " <robot@example.test>")),
              odegard + " <robot@example.test>");
}

TEST(MimeWords, TheEnvelopeTakesTheAddressesOnly) {
    struct Case {
        std::string list;
        std::vector<std::string> addresses;
    } cases[] = {
        {"a@x.test, b@x.test;c@x.test\td@x.test\ne@x.test", {"a@x.test", "b@x.test", "c@x.test", "d@x.test", "e@x.test"}},
        {"\xC3\x98" "deg\xC3\xA5rd <robot@x.test>", {"robot@x.test"}},
        {"Ada Lovelace <ada@x.test>, b@x.test", {"ada@x.test", "b@x.test"}},
        {"\"Lovelace, Ada\" <ada@x.test>; <c@x.test>", {"ada@x.test", "c@x.test"}},
        {"", {}},
    };
    for (const Case& c : cases) EXPECT_EQ(EnvelopeAddresses(c.list), c.addresses) << c.list;
}
