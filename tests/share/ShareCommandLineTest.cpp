#include "share/ShareCommandLine.h"

#include "tests/support/CommandLineWords.h"

namespace quillet::test {

TEST(ShareCommandLine, WrongUsageNamesTheWordThatIsWrong) {
    expectWrongUsage(readShareCommandLine,
                     {
                         {{"x", "-vx"}, "\"-x\""},
                         {{"x", "--to"}, "\"--to\" needs a value"},
                         {{"--html=1"}, "\"--html\" takes no value"},
                         {{"--html", "--text"}, "one of \"--html\" and \"--text\""},
                         {{"--command", "two words"}, "\"two words\""},
                         {{"--command", "a/b"}, "\"a/b\""},
                         {{"--command="}, "not \"\""},
                     });
}

}  // namespace quillet::test
