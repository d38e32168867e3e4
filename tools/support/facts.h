// What a command reports of its work: named values, printed for people or as JSON for programs.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace sorvo_tool {

using FactValue = std::variant<bool, std::int64_t, double, std::string, std::vector<std::int64_t>,
                               std::vector<std::string>>;

// Names are lower_case; in print, underscores become spaces.
class Facts {
  public:
    void add(std::string name, FactValue value) {
        facts_.emplace_back(std::move(name), std::move(value));
    }
    void append(const Facts& more) {
        facts_.insert(facts_.end(), more.facts_.begin(), more.facts_.end());
    }

    std::string as_lines() const;  // "  name   value" each
    std::string as_json() const;   // one object on one line

  private:
    std::vector<std::pair<std::string, FactValue>> facts_;
};

// Makes a count or a plain integer a FactValue.
template <typename Integer>
FactValue number(Integer value) {
    return static_cast<std::int64_t>(value);
}

}  // namespace sorvo_tool
