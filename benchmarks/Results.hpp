// What a run of benchmark-writers measured, read from the JSON that it leaves.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace benchmarks {

/// Another writer: its name in the results, and its title.
struct Peer
{
    std::string_view name;
    std::string_view title;
};

/// The name of this project's writer in the results, with its main target.
inline constexpr const char* OURS = "tarn";

inline constexpr Peer PEERS[] = {
    {"qt", "Qt"}, {"libxml2", "libxml2"}, {"tinyxml2", "tinyxml2"}, {"pugixml", "pugixml"}};

/// The names of the checked layer, fed UTF-8 and fed UTF-16.
inline constexpr const char* LAYER = "tarn document";
inline constexpr const char* LAYER_FED_UTF16 = "tarn document UTF-16";

/// The same bytes by the least code that makes them.
inline constexpr Peer BY_HAND = {"by-hand", "by hand"};

class Results
{
public:
    /// @throws std::runtime_error that says what is wrong with @p file.
    explicit Results(const std::string& file);

    /// The documents in the order in which they were measured.
    const std::vector<std::string>& documents() const { return documentNames; }

    struct Measurement
    {
        double medianNanoseconds = 0;
        double megabytesPerSecond = 0;
        /// The standard deviation of the repetitions over their mean.
        double variation = 0;
    };

    /// @param writer its name, with the suffix of the benchmark library for a run on threads.
    /// @return null if the writer did not write the document.
    const Measurement* find(const std::string& document, const std::string& writer) const;

    /// @return the median time of @p writer over that of @p other.
    std::optional<double> ratio(const std::string& document, const std::string& writer,
                                const std::string& other = OURS) const;

    /// @return true if @p peer wrote any document.
    bool has(std::string_view peer) const;

    /// What the run says about itself: "processor", "compiler", and the version of each writer.
    std::string context(const std::string& key) const;

private:
    std::vector<std::string> documentNames;
    std::map<std::pair<std::string, std::string>, Measurement> measurements;
    std::map<std::string, std::string> contextValues;
};

} // namespace benchmarks
