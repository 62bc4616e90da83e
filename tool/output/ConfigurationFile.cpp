#include "tool/output/ConfigurationFile.h"

#include "stmdcm/capture/Container.h"
#include "stmdcm/reading/ConfigurationReader.h"
#include "stmdcm/reading/Reading.h"
#include "tool/output/OutputFile.h"

namespace stmdcm {

namespace {

Configuration ReadAs(ConfigurationKind kind, const std::string& path) {
    if (kind == ConfigurationKind::Capture) {
        return Read(Container(path)).configuration;
    }
    const CaptureFile file(path, CaptureFile::Identifier::Optional);
    Settings settings;
    Configuration configuration;
    settings.Read(file.Read(0, file.Size()), Zu::Wep::Trace::kFileLineLimits);
    Fill(configuration, settings);
    return configuration;
}

}  // namespace

std::vector<Difference> WriteConfiguration(const std::string& path, const std::string& bytes,
                                           const Configuration& expected, bool force,
                                           const std::vector<std::string>& inputs) {
    OutputFile output(path, force, inputs);
    output.Write(bytes);
    output.Flush();
    const Configuration written =
        output.ReadBack([&](const std::string& name) { return ReadAs(KindOfName(path), name); });
    std::vector<Difference> differences = Compare(expected, written);
    output.Commit();
    return differences;
}

}  // namespace stmdcm
