#include <gtest/gtest.h>
#include <string>

#include "mailhost/maildir/MaildirName.h"

namespace quillet::mailhost {
namespace {

struct NameCase {
    std::string fileName;
    std::string base;
    std::string flags;
    std::string stable;
    std::uint64_t time;
    std::uint64_t uid;
    std::string moved;  // the new name, behind its time
};

TEST(MaildirName, IsTakenApartAndNeverCarriesItsPlaceAlong) {
    const std::string unique = ".M5P6Q7.a\\057b\\072c";
    const NameCase cases[] = {
        {"17.M1.h,S=5,U=7:2,FS", "17.M1.h,S=5,U=7", "FS", "17.M1.h,S=5", 17, 7, ",S=5:2,FS"},
        {"17.M1.h,U=1:2,", "17.M1.h,U=1", "", "17.M1.h", 17, 1, ":2,"},
        {"17.M1.h,FMD5=ab,U=7,W=9;2,S",
         "17.M1.h,FMD5=ab,U=7,W=9",
         "S",
         "17.M1.h,W=9",
         17,
         7,
         ",W=9;2,S"},
        {"17.h!2,Sab", "17.h", "Sab", "17.h", 17, 0, "!2,Sab"},
        {"17.h:2,S,22,", "17.h", "S,22,", "17.h", 17, 0, ":2,S,22,"},
        {"17.h:2,S:2,T", "17.h:2,S", "T", "17.h:2,S", 17, 0, ":2,T"},
        {"17.h,Ux=1,SU=2", "17.h,Ux=1,SU=2", "", "17.h,Ux=1,SU=2", 17, 0, ":2,"},
        {"U=7,U=8", "U=7,U=8", "", "U=7", 0, 8, ":2,"},
        {"17", "17", "", "17", 0, 0, ":2,"},
        {"1x.h,U=99999999999999999999", "1x.h,U=99999999999999999999", "", "1x.h", 0, 0, ":2,"},
        {"2,S", "2,S", "", "2,S", 0, 0, ":2,"},
        {"", "", "", "", 0, 0, ":2,"},
    };
    for (const NameCase& row : cases) {
        SCOPED_TRACE(row.fileName);
        const MaildirName name = parseMaildirName(row.fileName);
        EXPECT_EQ(name.base, row.base);
        EXPECT_EQ(name.flags, row.flags);
        EXPECT_EQ(stableBase(name.base), row.stable);
        EXPECT_EQ(timeOf(name.base), row.time);
        EXPECT_EQ(uidOf(name.base), row.uid);
        EXPECT_EQ(newMaildirName(row.fileName, {3, 5, 6, 7, "a/b:c"}),
                  (row.time > 0 ? "17" : "3") + unique + row.moved);
    }
}

TEST(MaildirName, IdentifierIsTheCutHashOfTheStableBase) {
    EXPECT_EQ(identifierOf("abc,U=5"), "qba7816bf8f01cfea414140de5dae2223");
}

}  // namespace
}  // namespace quillet::mailhost
