#include "loc/Translation.h"

#include <csignal>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "lib1/plat/RecordingLogger.h"
#include "loc/Localize.h"

namespace {

using loc::Translation;
using testing::ElementsAre;
using testing::IsEmpty;

RecordingLogger recorder("recorder");

const char plain[] = "plain";
const char percents[] = "50 %% of %%";
const char format[] = "%S";

TEST(Translation, StatesAreNumbered) {
    EXPECT_EQ(Translation::TR_UNUSED, 0);
    EXPECT_EQ(Translation::TR_RAW, 1);
    EXPECT_EQ(Translation::TR_FORMATTED, 2);
}

TEST(Translation, RefersToAStaticText) {
    Translation translation;
    translation.set(plain, false);
    EXPECT_EQ(translation.get(false, "id"), plain);
}

TEST(Translation, OwnsACopy) {
    Translation translation;
    translation.set(plain, true);
    EXPECT_NE(translation.get(false, "id"), plain);
    EXPECT_STREQ(translation.get(false, "id"), plain);
}

TEST(Translation, RawTextIsLeftAsItIs) {
    Translation translation;
    translation.set(percents, false);
    EXPECT_EQ(translation.get(true, "id"), percents);
    EXPECT_EQ(translation.get(true, "id"), percents);
}

class FinishedTranslation : public testing::TestWithParam<bool> {};
TEST_P(FinishedTranslation, IsMadeOnce) {
    Translation translation;
    translation.set(percents, GetParam());
    const char* const finished = translation.get(false, "id");
    EXPECT_STREQ(finished, "50 % of %");
    EXPECT_EQ(translation.get(false, "id"), finished);
}
INSTANTIATE_TEST_SUITE_P(Owned, FinishedTranslation, testing::Bool());

TEST(Translation, DirectiveInAFinishedTextIsReportedAtTheFirstRead) {
    const LogSetting setting("Localize:recorder:0");
    Translation translation;
    translation.set(format, false);
    EXPECT_STREQ(translation.get(false, "id"), "%%S");
    EXPECT_STREQ(translation.get(false, "id"), "%%S");
    EXPECT_THAT(recorder.takeTexts(), ElementsAre("Bad loc string for args - %S"));
}

TEST(Translation, DirectiveInARawTextIsNotLookedAt) {
    const LogSetting setting("Localize:recorder:0");
    Translation translation;
    translation.set(format, false);
    translation.get(true, "id");
    EXPECT_THAT(recorder.takeTexts(), IsEmpty());
}

TEST(Translation, ReplacedTextStartsAfresh) {
    Translation translation;
    translation.set(percents, true);
    translation.get(false, "id");
    translation.set(format, true);
    EXPECT_STREQ(translation.get(true, "id"), "%S");
    translation.set(plain, false);
    EXPECT_EQ(translation.get(false, "id"), plain);
}

TEST(Translation, OwnTextCanBeStoredAgain) {
    Translation translation;
    translation.set(plain, true);
    translation.set(translation.get(true, "id"), true);
    EXPECT_STREQ(translation.get(false, "id"), plain);
}

TEST(TranslationDeathTest, IsNotReadFinishedAndThenRaw) {
    Translation translation;
    translation.set(plain, false);
    translation.get(false, "some_id");
    EXPECT_EXIT(translation.get(true, "some_id"), testing::KilledBySignal(SIGABRT),
                "Assertion '\\(raw == \\(state == TR_RAW\\)\\)' failed at .*Translation.cpp.*: "
                "Can't use same string as both raw and formatted - some_id");
}

TEST(TranslationDeathTest, IsNotReadRawAndThenFinished) {
    Translation translation;
    translation.set(plain, false);
    translation.get(true, "some_id");
    EXPECT_EXIT(translation.get(false, "some_id"), testing::KilledBySignal(SIGABRT),
                "Can't use same string as both raw and formatted - some_id");
}

} // namespace
