#include "recognize/RecognitionLanguages.h"

#include <gtest/gtest.h>

using RecognitionLanguages::choose;

TEST(RecognitionLanguages, TheUsersLanguagesComeFirstInTheirOrderAndEnglishLast)
{
    EXPECT_EQ(choose({"de-DE", "fr-FR"}, {"deu", "eng", "fra"}), QStringList({"deu", "fra", "eng"}));
}

TEST(RecognitionLanguages, ARegionalVariantMapsToTheBareLanguagesModel)
{
    EXPECT_EQ(choose({"de-CH"}, {"eng", "deu"}), QStringList({"deu", "eng"}));
    EXPECT_EQ(choose({"pt_BR"}, {"por", "eng"}), QStringList({"por", "eng"}));
}

TEST(RecognitionLanguages, ALanguageWithNoModelAddsNothing)
{
    EXPECT_EQ(choose({"ja-JP", "en-GB"}, {"eng"}), QStringList({"eng"}));
}

TEST(RecognitionLanguages, ARegionalEnglishIsFoundOnceThroughItsLanguage)
{
    EXPECT_EQ(choose({"en-GB", "en-US", "en"}, {"eng", "deu"}), QStringList({"eng"}));
}

TEST(RecognitionLanguages, TheFirstInstalledModelOfTheLanguageMatches)
{
    // Models are tried in their order; the first of the language wins.
    EXPECT_EQ(choose({"zh-Hant"}, {"chi_tra", "chi_sim", "eng"}), QStringList({"chi_tra", "eng"}));
    EXPECT_EQ(choose({"zh-Hant"}, {"chi_sim", "chi_tra", "eng"}), QStringList({"chi_sim", "eng"}));
    EXPECT_EQ(choose({"nb-NO"}, {"nor", "eng"}), QStringList({"nor", "eng"}));
}

TEST(RecognitionLanguages, WithoutEnglishInstalledTheFirstModelStandsIn)
{
    EXPECT_EQ(choose({"en-US"}, {"deu"}), QStringList({"deu"}));
    EXPECT_EQ(choose({}, {}), QStringList());
}

TEST(RecognitionLanguages, ModelsHaveTheirLanguageTags)
{
    EXPECT_EQ(RecognitionLanguages::tagOf("eng"), "en");
    EXPECT_EQ(RecognitionLanguages::tagOf("chi_sim"), "zh-Hans");
    EXPECT_EQ(RecognitionLanguages::tagOf("frk"), "frk");
}
