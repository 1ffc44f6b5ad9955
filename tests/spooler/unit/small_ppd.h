#pragma once

#include <string>
#include <vector>

namespace rlx::testing {

/// A PPD file with what every one has, and these lines.
inline std::string small_ppd(const std::string& lines) {
  return "*PPD-Adobe: \"4.3\"\n"
         "*FormatVersion: \"4.3\"\n"
         "*FileVersion: \"1.0\"\n"
         "*LanguageVersion: English\n"
         "*LanguageEncoding: ISOLatin1\n"
         "*PCFileName: \"TEST.PPD\"\n"
         "*Manufacturer: \"Test\"\n"
         "*Product: \"(Test)\"\n"
         "*ModelName: \"Test\"\n"
         "*NickName: \"Test\"\n" +
         lines;
}

/// An option of a PPD file.
inline std::string ppd_option(const std::string& name, const std::string& by_default,
                              const std::vector<std::string>& choices) {
  std::string lines = "*OpenUI *" + name + ": PickOne\n*Default" + name + ": " + by_default + '\n';
  for (const std::string& choice : choices) {
    lines += '*' + name + ' ' + choice + '/' + choice + ": \"\"\n";
  }
  return lines + "*CloseUI: *" + name + '\n';
}

}  // namespace rlx::testing
