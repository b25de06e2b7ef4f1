#include "package/CaptureScopeCoding.h"

#include <nlohmann/json.hpp>

#include "package/JsonFields.h"

namespace vesk::package {

namespace {

struct ScopeEncoder {
  nlohmann::json operator()(const CaptureScope::Display& display) const {
    return {{"display", {{"_0", display.id}}}};
  }
  nlohmann::json operator()(const CaptureScope::Window& window) const {
    return {{"window", {{"_0", window.id}}}};
  }
  nlohmann::json operator()(const CaptureScope::Region& region) const {
    const auto origin = nlohmann::json::array({region.rect.x, region.rect.y});
    const auto size = nlohmann::json::array({region.rect.width, region.rect.height});
    return {{"region",
             {{"displayID", region.displayID}, {"rect", nlohmann::json::array({origin, size})}}}};
  }
};

std::unexpected<std::string> failure(std::string cause) {
  return std::unexpected(std::move(cause));
}

/// The identifier under a key that must be there.
std::expected<std::uint32_t, std::string> requiredID(const nlohmann::json& payload,
                                                     std::string_view key) {
  JsonFields fields(payload);
  std::optional<std::uint32_t> id;
  fields.read(key, id);
  if (fields.failure()) return failure(*fields.failure());
  if (!id) return failure("缺少标识“" + std::string(key) + "”");
  return *id;
}

bool isPairOfNumbers(const nlohmann::json& json) {
  return json.is_array() && json.size() == 2 && json[0].is_number() && json[1].is_number();
}

template <typename Case>
std::expected<CaptureScope, std::string> identified(const nlohmann::json& payload) {
  const auto id = requiredID(payload, "_0");
  if (!id) return failure(id.error());
  return CaptureScope{Case{*id}};
}

std::expected<CaptureScope, std::string> region(const nlohmann::json& payload) {
  const auto displayID = requiredID(payload, "displayID");
  if (!displayID) return failure(displayID.error());
  const auto rect = payload.find("rect");
  if (rect == payload.end() || !rect->is_array() || rect->size() != 2 ||
      !isPairOfNumbers((*rect)[0]) || !isPairOfNumbers((*rect)[1])) {
    return failure("“rect”应为 [[x,y],[宽,高]]");
  }
  const auto& origin = (*rect)[0];
  const auto& size = (*rect)[1];
  return CaptureScope{CaptureScope::Region{*displayID,
                                           {origin[0].get<double>(), origin[1].get<double>(),
                                            size[0].get<double>(), size[1].get<double>()}}};
}

}  // namespace

nlohmann::json encodeCaptureScope(const CaptureScope& scope) {
  return std::visit(ScopeEncoder{}, scope.value);
}

std::expected<CaptureScope, std::string> decodeCaptureScope(const nlohmann::json& json) {
  const JsonFields cases(json);
  if (cases.failure()) return failure(*cases.failure());
  const auto* displayPayload = cases.find("display");
  const auto* windowPayload = cases.find("window");
  const auto* regionPayload = cases.find("region");
  const int count = (displayPayload != nullptr ? 1 : 0) + (windowPayload != nullptr ? 1 : 0) +
                    (regionPayload != nullptr ? 1 : 0);
  if (count != 1) return failure("Invalid number of keys found, expected one.");
  if (displayPayload != nullptr) return identified<CaptureScope::Display>(*displayPayload);
  if (windowPayload != nullptr) return identified<CaptureScope::Window>(*windowPayload);
  return region(*regionPayload);
}

}  // namespace vesk::package
