// The forms of text in pages and completions, and the filling of templates.
#include "pagefiles.h"
#include "pagetext.h"
#include "tempdir.h"

#include <gtest/gtest.h>

#include <stdexcept>

TEST(PagesRoff, WhatRoffWouldReadAsARequestIsText) {
    EXPECT_EQ("\\&.B bold", pages::roff(".B bold"));
    EXPECT_EQ("one\n\\&.two", pages::roff("one\n.two"));
    EXPECT_EQ("\\&\\(aqquoted\\(aq", pages::roff("'quoted'"));
    EXPECT_EQ("a\\e\\-b.c", pages::roff("a\\-b.c"));
}

TEST(PagesRoff, EmptyLinesOfABlockAreRequestsSinceReadersComplainOfThem) {
    EXPECT_EQ(".RS\n.nf\none\n.sp\ntwo\n.fi\n.RE\n", pages::roffBlock("one\n \ntwo\n"));
    EXPECT_EQ("", pages::roffBlock(""));
}

TEST(PagesQuoting, QuotesInAWordSurvive) {
    EXPECT_EQ("'a b' 'it'\\''s'", pages::quotedList({"a b", "it's"}));
    EXPECT_EQ("'it\\'s' 'a\\\\b'", pages::fishQuotedList({"it's", "a\\b"}));
}

TEST(PagesTemplates, NamesBetweenAtSignsAreReplacedAndOtherAtSignsStay) {
    EXPECT_EQ("a one b@c @ ${x[@]} @lower@ one",
              pages::filled("a @NAME@ b@c @ ${x[@]} @lower@ @NAME@", {{"NAME", "one"}}));
    EXPECT_EQ("ends in @", pages::filled("ends in @", {}));
}

TEST(PagesTemplates, ANameWithoutAValueIsAnError) {
    EXPECT_THROW(pages::filled("@GONE@", {{"NAME", "one"}}), std::runtime_error);
}

TEST(PagesTemplates, AMissingTemplateIsToldByItsName) {
    const TempDir folder;
    try {
        pages::writePages({folder.path("gone"), folder.path("share"), {}}, "kelvarrig", {}, {}, {}, {});
        FAIL() << "no error";
    } catch (const std::runtime_error& error) {
        EXPECT_NE(std::string::npos, std::string(error.what()).find("gone/kelvarrig.1.in")) << error.what();
    }
    EXPECT_FALSE(folder.exists("share"));
}
