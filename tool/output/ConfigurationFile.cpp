#include "tool/output/ConfigurationFile.h"

#include "stmdcm/capture/Container.h"
#include "stmdcm/reading/ConfigurationReader.h"
#include "stmdcm/reading/Reading.h"
#include "tool/output/OutputFile.h"

namespace stmdcm {

namespace {

Configuration ReadBack(const OutputFile& output) {
    if (KindOfName(output.Path()) == ConfigurationKind::Capture) {
        return Read(Container(output.ReadBackPath())).configuration;
    }
    const CaptureFile file(output.ReadBackPath(), CaptureFile::Identifier::Optional);
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
    std::vector<Difference> differences = Compare(expected, ReadBack(output));
    output.Commit();
    return differences;
}

}  // namespace stmdcm
