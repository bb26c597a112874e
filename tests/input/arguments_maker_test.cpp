#include <lorvane/lorvane.hpp>

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "test_support.hpp"

using lorvane::ETInput;
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

// A maker that adds nothing of its own: every default that adds an argument turned off.
Maker bareMaker() {
  Maker maker;
  maker.addDefaultSettings = false;
  maker.charset = std::nullopt;
  maker.enableSeparator = false;
  maker.extractsEmbedded = false;
  maker.extractsBinaries = false;
  return maker;
}

}  // namespace

TEST_F(ArgumentsMakerTest, ASourceThatTheToolWouldReadAsAnOptionGoesAsARelativePath) {
  const auto source = [](const std::string& path) {
    Maker maker = bareMaker();
    maker.sourceURL = std::filesystem::path(path);
    maker.sourcePath = path;
    return maker.make();
  };
  for (const std::string name : {"-all=", "-", "-@", "--", "-execute", "-stay_open"}) {
    EXPECT_EQ(source(name), (Strings{"./" + name, "./" + name})) << name;
    EXPECT_EQ(Maker::sourceArgument(name), "./" + name);
  }
  for (const std::string path : {"/-abs", "a/-b", "./-c", "", " -d", "\n-e"}) {
    EXPECT_EQ(source(path), (Strings{path, path})) << path;
  }
  // What the caller writes into the arguments itself stays as it is.
  ETInput input;
  input.arguments = {"-ver"};
  input.addArguments([](Maker& maker) { maker.additional = {"-json"}; });
  EXPECT_EQ(input.arguments, (Strings{"-ver", "-json"} + defaults));
}

TEST_F(ArgumentsMakerTest, DefaultsAndSingleFields) {
  Maker maker;
  EXPECT_EQ(maker.make(), defaults);
  maker.sourcePath = "";  // kept even when empty, unlike an empty password
  maker.password = "";
  EXPECT_EQ(maker.make(), defaults + Strings{""});
  maker.filePathFilter = lorvane::ETPathFilter::suffix({});
  EXPECT_EQ(maker.make(), defaults + Strings{""});
}

// Each field alone gives its own arguments; all together give them in this order.
TEST_F(ArgumentsMakerTest, EveryFieldSetFollowsTheFixedOrder) {
  ETSettings::shared().setExtraArguments({"-x1", "-x2"});
  const std::vector<std::pair<std::function<void(Maker&)>, Strings>> fields = {
      {[](Maker& m) { m.additional = {"-json"}; }, {"-json"}},
      {[](Maker& m) { m.addDefaultSettings = true; }, {"-q", "-x1", "-x2"}},
      {[](Maker& m) { m.language = lorvane::ETLanguage::german; }, {"-lang", "de"}},
      {[](Maker& m) { m.charset = lorvane::ETCharset::macBrew; }, {"-charset", "MacHebrew"}},
      {[](Maker& m) { m.enableSeparator = true; }, {"-sep", ","}},
      {[](Maker& m) { m.enableShortTags = true; }, {"-s"}},
      {[](Maker& m) { m.enableRawValues = true; }, {"-n"}},
      {[](Maker& m) { m.disableComposite = true; }, {"-e"}},
      {[](Maker& m) { m.enableCorrection = true; }, {"-F"}},
      {[](Maker& m) { m.ignoreMinorErrors = true; }, {"-m"}},
      {[](Maker& m) { m.overwriteInPlace = true; }, {"-overwrite_original_in_place", "-P"}},
      {[](Maker& m) { m.forceRawLocation = true; }, {"-c", "%.6f"}},
      {[](Maker& m) { m.recurseSubfolders = true; }, {"-r"}},
      {[](Maker& m) { m.extractsEmbedded = true; }, {"-ee"}},
      {[](Maker& m) { m.extractsBinaries = true; }, {"-b"}},
      {[](Maker& m) {
         m.filePathFilter = lorvane::ETPathFilter::suffix({"jpg", "HEIC"});
       },
       {"-ext", "jpg", "-ext", "HEIC"}},
      {[](Maker& m) { m.password = "p w"; }, {"-password", "p w"}},
      {[](Maker& m) { m.sourceURL = std::filesystem::path("/dir with blank/a%20.jpg"); },
       {"/dir with blank/a%20.jpg"}},
      {[](Maker& m) { m.sourcePath = "/p.jpg"; }, {"/p.jpg"}},
      {[](Maker& m) { m.forceExecute = true; }, {"-execute"}},
  };
  Maker all = bareMaker();
  EXPECT_EQ(all.make(), Strings{});
  Strings expected;
  for (const auto& [set, arguments] : fields) {
    Maker one = bareMaker();
    set(one);
    EXPECT_EQ(one.make(), arguments);
    set(all);
    expected = expected + arguments;
  }
  EXPECT_EQ(all.make(), expected);
}

TEST_F(ArgumentsMakerTest, ListFormMakesOneMakerPerElement) {
  const std::vector<std::string> files{"/1.jpg", "/2.jpg", "/3.jpg"};
  ETInput input;
  input.arguments = {"-ver"};
  input.addArguments(files, [](const std::string& file, Maker& maker) {
    EXPECT_FALSE(maker.enableRawValues) << "a maker is never reused";
    maker.enableRawValues = true;
    maker.sourcePath = file;
    maker.forceExecute = file != "/3.jpg";
  });
  const Strings options = Strings{"-q", "-charset", "UTF8", "-sep", ",", "-n", "-ee", "-b"};
  EXPECT_EQ(input.arguments, (Strings{"-ver"} + options + Strings{"/1.jpg", "-execute"} + options +
                              Strings{"/2.jpg", "-execute"} + options + Strings{"/3.jpg"}));

  int calls = 0;
  input.addArguments(std::vector<int>{}, [&](int, Maker&) { ++calls; });
  EXPECT_EQ(calls, 0);
  EXPECT_EQ(input.arguments.size(), 1 + 3 * options.size() + 5) << "an empty list adds nothing";
}
