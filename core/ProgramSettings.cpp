#include "core/ProgramSettings.h"

#include <type_traits>

#include "core/Convert.h"
#include "platform/text/Case.h"

namespace orvanto {
namespace {

std::string ToText(const std::string& text) { return text; }
std::string ToText(bool flag) { return flag ? "1" : "0"; }
std::string ToText(std::int16_t number) { return std::to_string(number); }

void FromText(const std::string& text, std::string& value) { value = text; }
void FromText(const std::string& text, bool& value) { value = text == "1"; }
void FromText(const std::string& text, std::int16_t& value) { value = ToInt16(text); }

// Calls `act` with the member, where there is one.
template <class Values, class Act>
void WithMember(const Setting::Member& member, Values& values, Act act) {
  std::visit(
      [&](const auto which) {
        if constexpr (!std::is_same_v<decltype(which), const std::monostate>) act(values.*which);
      },
      member);
}

}  // namespace

std::string Setting::Text(Settings& settings, const std::string& otherwise) const {
  switch (kept) {
    case Kept::ForMachine:
      return settings.ReadMachineSetting(section, name, otherwise);
    case Kept::ForUser:
      return settings.ReadUserSetting(section, name, otherwise);
    case Kept::ByMode:
      break;
  }
  return settings.ReadSetting(section, name, otherwise);
}

void Setting::Store(Settings& settings, const std::string& text) const {
  switch (kept) {
    case Kept::ForMachine:
      return settings.WriteMachineSetting(section, name, text);
    case Kept::ForUser:
      return settings.WriteUserSetting(section, name, text);
    case Kept::ByMode:
      break;
  }
  settings.WriteSetting(section, name, text);
}

void Setting::Load(Settings& settings, ProgramSettings& values) const {
  if (kept == Kept::ByMode && !settings.IsStoring()) return;
  WithMember(member, values, [&](auto& value) { FromText(Text(settings), value); });
}

void Setting::Save(Settings& settings, const ProgramSettings& values) const {
  WithMember(member, values, [&](const auto& value) { Store(settings, ToText(value)); });
}

const Setting* FindSetting(const std::string& section, const std::string& name) {
  for (const Setting& setting : kSettings) {
    if (EqualIgnoringCase(section, setting.section) && EqualIgnoringCase(name, setting.name)) {
      return &setting;
    }
  }
  return nullptr;
}

}  // namespace orvanto
