#include "zxalign/ZxAlignSettings.h"

#include <gtest/gtest.h>

namespace {

struct Case {
  const char* name;
  const char* value; ///< not the default
  std::vector<const char*> refused;
};

const std::vector<Case> kCases{
    {"rotation", "off", {"", "2", "ON", "offf"}},
    {"iterations", "0", {"-1", "1.5", "2147483648", "ten", "", "5 "}},
    {"translation-step", "0.25", {"0", "-1", "nan", "inf", "1,5", ""}},
    {"rotation-step", "0.125", {"0", "361", "1e", "-0.1"}},
    {"levels", "2147483647", {"-1", "0x10"}},
    {"matrix-dimension", "1", {"0"}},
    {"percentage", "100", {"101", "-1"}},
    {"raster-step", "3", {"0"}},
    {"image-raster-step", "4", {"0"}},
    {"mirror", "on", {"maybe"}},
    {"calculated-threshold", "on", {"maybe"}},
    {"threshold", "255", {"256", "-1"}},
    {"angular-step", "90", {"0", "90.5"}},
    {"bright-background", "on", {"maybe"}},
    {"width", "1", {"0", "1048577"}},
    {"height", "1048576", {"0", "1048577"}},
    {"automatic-origin", "on", {"maybe"}},
    {"background", "-1.5", {"nan", "1e99", "white"}},
    {"background-colour", "1,2.5,-3,255", {"1,2,3", "1,2,3,4,5", "1,,3,4", "1,2,3,4,", ""}},
    {"most-frequent-background", "on", {"maybe"}},
};

} // namespace

TEST(ZxAlignSettings, EveryOneIsSetReadBackAndChecked)
{
  const std::span<const ZxAlignSetting> table = ZxAlignSettings::table();
  ASSERT_EQ(table.size(), kCases.size());
  const ZxAlignSettings fresh;
  for (std::size_t i = 0; i < kCases.size(); ++i) {
    const auto& [name, value, refused] = kCases[i];
    EXPECT_STREQ(table[i].name, name);
    const bool fromInput = *table[i].defaultValue == '\0';
    EXPECT_TRUE(fromInput || fresh.get(name) == table[i].defaultValue) << name;
    ZxAlignSettings settings;
    EXPECT_EQ(settings.set(name, value), "") << name;
    for (const ZxAlignSetting& other : table) // it is a setting of its own
      EXPECT_EQ(settings.get(other.name), other.name == table[i].name ? value : fresh.get(other.name))
          << name;
    for (const char* text : refused) {
      const std::string sentence = settings.set(name, text);
      EXPECT_NE(sentence.find(name), std::string::npos) << text;
      EXPECT_NE(sentence.find(table[i].range), std::string::npos) << text;
      EXPECT_EQ(settings.get(name), value) << name << " after " << text;
    }
  }
  EXPECT_EQ(ZxAlignSettings().set("colour", "1"), "There is no setting named colour.");
  EXPECT_EQ(fresh.get("colour"), "");
}
