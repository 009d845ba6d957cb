#include "core/ProgramSettings.h"

#include "core/Convert.h"

namespace orvanto {
namespace {

std::string ToText(const std::string& text) { return text; }
std::string ToText(bool flag) { return flag ? "1" : "0"; }
std::string ToText(std::int16_t number) { return std::to_string(number); }

void FromText(const std::string& text, std::string& value) { value = text; }
void FromText(const std::string& text, bool& value) { value = text == "1"; }
void FromText(const std::string& text, std::int16_t& value) { value = ToInt16(text); }

}  // namespace

void Setting::Load(Settings& settings, ProgramSettings& values) const {
  std::visit(
      [&](const auto which) {
        std::string text = ToText(values.*which);
        settings.ReadSetting(section, name, defaultValue, text);
        FromText(text, values.*which);
      },
      member);
}

void Setting::Save(Settings& settings, const ProgramSettings& values) const {
  std::visit([&](const auto which) { settings.WriteSetting(section, name, ToText(values.*which)); },
             member);
}

}  // namespace orvanto
