// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>
#include <opencv2/core.hpp>

namespace quorvel::sim {

using Json = nlohmann::ordered_json;  ///< keeps members in the order in which they are written

/// Throws std::runtime_error with "where: what".
[[noreturn]] void refuse(const std::string& where, const std::string& what);

/// A JSON value as a message shows it: on one line, ASCII, long ones cut short.
std::string shown(const Json& value);

/// Reads the members of one JSON object into variables and notes the known names, to find misspelt ones. A missing
/// member does not change its variable. Every error is a refuse() that names the member by its full path.
class Members {
public:
    /// @param object must outlive this reader; refused when it is not an object
    /// @param where path of the object within the file, empty for the file itself
    Members(const Json& object, std::string where);

    /// The member, or nullptr when it is left out.
    const Json* find(const std::string& name);

    void read(const std::string& name, double& value);
    void read(const std::string& name, int& value);
    void read(const std::string& name, std::uint32_t& value);
    void read(const std::string& name, std::string& value);
    /// A colour written "#rrggbb".
    void read(const std::string& name, cv::Vec3b& value);
    /// A number that must not be left out.
    void readRequired(const std::string& name, double& value);

    /// Refuses the first member whose name is not known.
    void finish() const;

private:
    std::string at(const std::string& name) const;
    template <typename Integer>
    void readInteger(const std::string& name, Integer& value);

    const Json& object_;
    std::string where_;
    std::vector<std::string> known_;
};

}  // namespace quorvel::sim
