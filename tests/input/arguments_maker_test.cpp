#include <lorvane/lorvane.hpp>

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "test_support.hpp"

using lorvane::ETCharset;
using lorvane::ETInput;
using lorvane::ETLanguage;
using lorvane::ETPathFilter;
using lorvane::ETSettings;
using Maker = ETInput::ArgumentsMaker;
using Strings = std::vector<std::string>;

namespace {

const Strings defaults{"-q", "-charset", "UTF8", "-sep", ",", "-ee", "-b"};

Strings operator+(Strings a, const Strings& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

// Each test starts without extra arguments and leaves the shared settings as it found them.
class ArgumentsMakerTest : public ::testing::Test {
protected:
  void SetUp() override { ETSettings::shared().setExtraArguments({}); }

  lorvane::test::SettingsGuard settings;
};

}  // namespace

TEST_F(ArgumentsMakerTest, DefaultMakerIsNotEmpty) {
  EXPECT_EQ(Maker().make(), defaults);

  Maker maker;
  maker.sourcePath = "/photos/a.jpg";
  EXPECT_EQ(maker.make(), defaults + Strings{"/photos/a.jpg"});
}

TEST_F(ArgumentsMakerTest, ExtraArgumentsFollowTheQuietFlag) {
  ETSettings::shared().setExtraArguments({"-api", "largefilesupport=1"});
  Maker maker;
  maker.additional = {"-Title=x", "-json"};
  maker.overwriteInPlace = true;
  maker.sourcePath = "/a b/c.jpg";
  EXPECT_EQ(maker.make(),
            (Strings{"-Title=x", "-json", "-q", "-api", "largefilesupport=1", "-charset", "UTF8",
                     "-sep", ",", "-overwrite_original_in_place", "-P", "-ee", "-b",
                     "/a b/c.jpg"}));
}

TEST_F(ArgumentsMakerTest, ExtraArgumentsAreReadAtEachMake) {
  Maker maker;
  const Strings before = maker.make();
  ETSettings::shared().setExtraArguments({"-fast"});
  const Strings after = maker.make();
  EXPECT_EQ(before, defaults);
  EXPECT_EQ(after, (Strings{"-q", "-fast", "-charset", "UTF8", "-sep", ",", "-ee", "-b"}));
  EXPECT_EQ(maker.make(), after) << "make() must not change the maker";
}

TEST_F(ArgumentsMakerTest, DisabledDefaultsLeaveNoTrace) {
  ETSettings::shared().setExtraArguments({"-fast"});
  Maker maker;
  maker.addDefaultSettings = false;
  EXPECT_EQ(maker.make(), (Strings{"-charset", "UTF8", "-sep", ",", "-ee", "-b"}));
  maker.charset = std::nullopt;
  maker.enableSeparator = false;
  maker.extractsEmbedded = false;
  maker.extractsBinaries = false;
  EXPECT_EQ(maker.make(), Strings{});
}

TEST_F(ArgumentsMakerTest, LanguageAndCharsetUseTheToolsWords) {
  Maker maker;
  maker.language = ETLanguage::chinese;
  maker.charset = ETCharset::macBrew;
  EXPECT_EQ(maker.make(),
            (Strings{"-q", "-lang", "zh_cn", "-charset", "MacHebrew", "-sep", ",", "-ee", "-b"}));
  maker.language = ETLanguage::english;
  EXPECT_EQ(maker.make()[2], "en");
}

TEST_F(ArgumentsMakerTest, EmptyPasswordIsDroppedButEmptyPathIsKept) {
  Maker maker;
  maker.password = "";
  maker.sourcePath = "";
  EXPECT_EQ(maker.make(), defaults + Strings{""});
  maker.password = "p w";
  EXPECT_EQ(maker.make(), (defaults + Strings{"-password", "p w", ""}));
}

TEST_F(ArgumentsMakerTest, PathFilterAddsItsExtensions) {
  Maker maker;
  maker.filePathFilter = ETPathFilter::suffix({});
  EXPECT_EQ(maker.make(), defaults);
  maker.filePathFilter = ETPathFilter::suffix({"jpg", "HEIC"});
  EXPECT_EQ(maker.make(), (defaults + Strings{"-ext", "jpg", "-ext", "HEIC"}));
}

TEST_F(ArgumentsMakerTest, SourcesComeLastBeforeExecute) {
  Maker maker;
  maker.forceExecute = true;
  EXPECT_EQ(maker.make(), defaults + Strings{"-execute"});
  maker.sourcePath = "/b.jpg";
  maker.sourceURL = std::filesystem::path("/dir with blank/a%20.jpg");
  EXPECT_EQ(maker.make(),
            (defaults + Strings{"/dir with blank/a%20.jpg", "/b.jpg", "-execute"}));
}

TEST_F(ArgumentsMakerTest, EveryFieldSetFollowsTheFixedOrder) {
  ETSettings::shared().setExtraArguments({"-x1", "-x2"});
  Maker maker;
  maker.additional = {"-json"};
  maker.language = ETLanguage::german;
  maker.charset = ETCharset::latin;
  maker.recurseSubfolders = true;
  maker.filePathFilter = ETPathFilter::suffix({"jpg"});
  maker.enableShortTags = true;
  maker.enableRawValues = true;
  maker.disableComposite = true;
  maker.enableCorrection = true;
  maker.ignoreMinorErrors = true;
  maker.overwriteInPlace = true;
  maker.forceRawLocation = true;
  maker.forceExecute = true;
  maker.password = "secret";
  maker.sourceURL = std::filesystem::path("/u.jpg");
  maker.sourcePath = "/p.jpg";
  EXPECT_EQ(maker.make(),
            (Strings{"-json", "-q", "-x1", "-x2", "-lang", "de", "-charset", "Latin", "-sep", ",",
                     "-s", "-n", "-e", "-F", "-m", "-overwrite_original_in_place", "-P", "-c",
                     "%.6f", "-r", "-ee", "-b", "-ext", "jpg", "-password", "secret", "/u.jpg",
                     "/p.jpg", "-execute"}));
}

TEST_F(ArgumentsMakerTest, EachBlockAppendsAFreshMakersList) {
  ETInput input;
  EXPECT_TRUE(input.arguments.empty());
  input.addArguments([](Maker&) {});
  EXPECT_EQ(input.arguments, defaults);
  input.addArguments([](Maker& maker) { maker.enableShortTags = true; });
  input.addArguments([](Maker&) {});
  EXPECT_EQ(input.arguments,
            (defaults + Strings{"-q", "-charset", "UTF8", "-sep", ",", "-s", "-ee", "-b"} +
             defaults));
}

TEST_F(ArgumentsMakerTest, ListFormMakesOneCommandPerElement) {
  const std::vector<std::string> files{"/1.jpg", "/2.jpg", "/3.jpg"};
  ETInput input;
  input.arguments = {"-ver"};
  input.addArguments(files, [](const std::string& file, Maker& maker) {
    maker.sourcePath = file;
    maker.forceExecute = true;
  });
  EXPECT_EQ(input.arguments, (Strings{"-ver"} + defaults + Strings{"/1.jpg", "-execute"} +
                              defaults + Strings{"/2.jpg", "-execute"} + defaults +
                              Strings{"/3.jpg", "-execute"}));

  ETInput joined;
  joined.addArguments(files, [](const std::string& file, Maker& maker) {
    maker.sourcePath = file;
  });
  EXPECT_EQ(joined.arguments, (defaults + Strings{"/1.jpg"} + defaults + Strings{"/2.jpg"} +
                               defaults + Strings{"/3.jpg"}));
}

TEST_F(ArgumentsMakerTest, ListFormNeverCarriesAMakerOver) {
  ETInput input;
  const int elements[] = {1, 2};
  input.addArguments(elements, [](int element, Maker& maker) {
    EXPECT_FALSE(maker.enableRawValues) << "element " << element;
    EXPECT_FALSE(maker.sourcePath.has_value()) << "element " << element;
    if (element == 1) {
      maker.enableRawValues = true;
      maker.sourcePath = "/one.jpg";
    }
  });
  EXPECT_EQ(input.arguments, (Strings{"-q", "-charset", "UTF8", "-sep", ",", "-n", "-ee", "-b",
                                      "/one.jpg"} +
                              defaults));
}

TEST_F(ArgumentsMakerTest, EmptyListNeverCallsTheBlock) {
  ETInput input;
  input.arguments = {"-ver"};
  int calls = 0;
  input.addArguments(std::vector<std::string>{}, [&](const std::string&, Maker&) { ++calls; });
  EXPECT_EQ(calls, 0);
  EXPECT_EQ(input.arguments, Strings{"-ver"});
}
