// Which device is meant, of those that there are.

#include "common/devices/choice.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "common/text/bad_use.h"

namespace devices {
namespace {

const std::vector<Listed> listed = {
    {0, 0, "CPU", "Portable", "Eight cores", "OpenCL 3.0", "1", notAGpu},
    {1, 0, "GPU", "Vendor's own", "Big [1]", "OpenCL 3.0", "2", ""},
    {1, 1, "GPU", "Vendor's own", "Big [2]", "OpenCL 3.0", "2", ""},
    {2, 0, "GPU", "Other vendor", "Small", "OpenCL 1.2", "3", ""},
    {2, 1, "custom", "Other vendor", "Bare", "OpenCL 1.2", "3", "no compiler"},
};

std::string Answer(const Wanted& wanted) {
  try {
    return std::to_string(IndexOf(wanted, listed));
  } catch (const text::BadUse& refusal) {
    return std::string("2: ") + refusal.what();
  } catch (const text::NothingToRunOn& refusal) {
    return std::string("3: ") + refusal.what();
  }
}

TEST(Choice, IsOneDeviceOrRefusedWithTheCandidates) {
  struct {
    Wanted wanted;
    const char* answer;
  } const cases[] = {
      {{"", "3"}, "3"},
      {{"", "0002"}, "2"},
      {{"", "small"}, "3"},
      {{"", "[2]"}, "2"},
      {{"OTHER", ""}, "3"},
      {{"own", ""}, "1"},
      {{"vendor", "big [1"}, "1"},
      {{"vendor", ""},
       "2: --platform 'vendor' fits 2 devices: 1 (Big [1] on Vendor's own), 3 (Small on Other "
       "vendor)"},
      {{"", "big"},
       "2: --device 'big' fits 2 devices: 1 (Big [1] on Vendor's own), 2 (Big [2] on Vendor's "
       "own)"},
      {{"", "0"},
       "3: no device fits --device '0': 0 (Eight cores) cannot be used: not a GPU "
       "('--list-devices' names them)"},
      {{"other", "bare"},
       "3: no device fits --platform 'other' --device 'bare': 4 (Bare) cannot be used: no "
       "compiler ('--list-devices' names them)"},
      {{"", "5"}, "3: no device fits --device '5' ('--list-devices' names them)"},
      {{"", "99999999999999999999"},
       "3: no device fits --device '99999999999999999999' ('--list-devices' names them)"},
      {{"portable", "1"},
       "3: no device fits --platform 'portable' --device '1' ('--list-devices' names them)"},
      {{"", "\x1B[2J"}, "3: no device fits --device '\\x1B[2J' ('--list-devices' names them)"},
  };
  for (const auto& c : cases) EXPECT_EQ(Answer(c.wanted), c.answer);
}

TEST(Choice, ALineTellsAllOfADevice) {
  std::string lines;
  for (const Listed& device : listed) lines += LineOf(device) + '\n';
  const std::vector<Listed> again = FromLines(lines);
  ASSERT_EQ(again.size(), listed.size());
  for (std::size_t i = 0; i < again.size(); ++i) EXPECT_EQ(LineOf(again[i]), LineOf(listed[i]));
  EXPECT_EQ(again[4].obstacle, "no compiler");
  EXPECT_EQ(again[3].obstacle, "");
  EXPECT_EQ(again[2].deviceIndex, 1U);
}

}  // namespace
}  // namespace devices
