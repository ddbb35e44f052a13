// SPDX-License-Identifier: Apache-2.0
#include "files/parameter_document.h"

#include <string>

#include <gtest/gtest.h>

namespace quorvel::test {

namespace {

using internal::documentProblem;
using internal::isTooDeep;

const std::string kYaml = "%YAML:1.0\n---\n";
const std::string kXml = "<?xml version=\"1.0\"?>\n<opencv_storage>\n";

TEST(DocumentProblem, AParameterFileHasNone) {
    EXPECT_EQ(documentProblem(kYaml + "Detect_Area: [ 1, 2, 3, 4 ]\nGround_Weight: 5.0e-01\n"), "");
    EXPECT_EQ(documentProblem(kXml + "<Detect_Area>\n  1 2 3 4</Detect_Area>\n</opencv_storage>\n"), "");
    EXPECT_EQ(documentProblem("{\n    \"Detect_Area\": [ 1, 2, 3, 4 ]\n}\n"), "");
    EXPECT_EQ(documentProblem(""), "") << "no document, but none that does harm";
    EXPECT_EQ(documentProblem("no document"), "");
}

TEST(DocumentProblem, YamlMayHaveCommentsIndentationAndAnEnd) {
    for (const std::string body : {"", "\n\n", "# nothing\n", "A:\n  - 1\n  - 2\n", "A: [ 1,\n     2 ]\nB: 3\n",
                                   "  A: 1\n  B: 2\n", "A: 1\r\nB: 2\r\n", "\"A\": 1", "A: 1\n...\n",
                                   "A: 1\n...\n# more\n \n", "A:\n   x: 1\n   # why\n# so\nB: 2\n"}) {
        EXPECT_EQ(documentProblem(kYaml + body), "") << body;
    }
    EXPECT_EQ(documentProblem("%YAML:1.0\nA: 1\n"), "") << "without its line of dashes";
    EXPECT_EQ(documentProblem("\xEF\xBB\xBF%YAML:1.0\n---\nA: 1\n"), "") << "with a byte order mark";
}

TEST(DocumentProblem, YamlThatIsNoMapIsKeptFromTheParser) {
    const std::string notNames = "is not made of names and values";
    for (const std::string body : {"- 1\n", " - 1\nD---\nl", "A: 1\n--\n", "[ 1, 2 ]\n", "A: 1\nword\n", "  A: 1\nB\n",
                                   "A: 1\n---\nB: 2\n", "A: 1\n...x\n"}) {
        EXPECT_EQ(documentProblem(kYaml + body), notNames) << body;
    }
    EXPECT_EQ(documentProblem("%YAML:1.\n - 1\nD---\nl"), notNames) << "the parser never comes back";
    EXPECT_EQ(documentProblem(kYaml + "A: 1.\n...\n--\n"), "continues after its end") << "nor here";
    EXPECT_EQ(documentProblem(kYaml + "A: 1.\n... \n%x\n\n - 1\n"), "continues after its end");
}

TEST(DocumentProblem, XmlMustBeClosed) {
    const std::string whole = kXml + "<A>1</A>\n</opencv_storage>";
    for (std::size_t size = 5; size < whole.size(); ++size) {
        EXPECT_EQ(documentProblem(whole.substr(0, size)), "does not end as a document of this kind does") << size;
    }
    EXPECT_EQ(documentProblem(whole + " \r\n\t"), "");
    EXPECT_EQ(documentProblem("\xEF\xBB\xBF<?xml version="), "does not end as a document of this kind does");
}

TEST(DocumentProblem, NoFormatHasZeroBytes) {
    for (const std::string& start : {kYaml, kXml, std::string("{")}) {
        EXPECT_EQ(documentProblem(start + std::string("\0</opencv_storage>", 18)), "holds a zero byte") << start;
    }
}

TEST(IsTooDeep, BoundsBracketsAndLines) {
    for (const char bracket : {'[', '{', '<'}) {
        EXPECT_FALSE(isTooDeep(std::string(1000, bracket)));
        EXPECT_TRUE(isTooDeep(std::string(900, bracket) + "\n" + std::string(101, bracket)));
    }
    EXPECT_FALSE(isTooDeep(std::string(1000, '-') + "\n" + std::string(1000, '-')));
    EXPECT_TRUE(isTooDeep("a\n" + std::string(1001, '-') + "\n"));
    EXPECT_FALSE(isTooDeep(""));
    EXPECT_FALSE(isTooDeep("\n\n"));
}

}  // namespace

}  // namespace quorvel::test
