#include "tool/output/ConfigurationFile.h"

#include <fmt/format.h>

#include "stmdcm/capture/Container.h"
#include "stmdcm/reading/ConfigurationReader.h"
#include "stmdcm/reading/Words.h"
#include "tool/output/GuardedHome.h"
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

namespace {

std::vector<std::string> Sentences(const std::string& name, const Configuration& expected,
                                   const Configuration& written) {
    std::vector<std::string> sentences;
    for (const Difference& difference : Compare(expected, written)) {
        sentences.push_back(difference.Sentence(Shown(name)));
    }
    return sentences;
}

}  // namespace

std::vector<std::string> LossesOf(const std::string& name, ConfigurationKind kind, const std::string& bytes,
                                  const Configuration& expected) {
    const GuardedHome home;
    const std::string path = home.Path() / "output";
    OutputFile output(path, false, {});
    output.Write(bytes);
    output.Flush();
    return Sentences(name, expected, ReadAs(kind, output.ReadBackPath()));
}

std::vector<std::string> WriteConfiguration(const std::string& path, const std::string& bytes,
                                            const Configuration& expected, bool force,
                                            const std::vector<std::string>& inputs) {
    OutputFile output(path, force, inputs);
    output.Write(bytes);
    output.Flush();
    const Configuration written =
        output.ReadBack([&](const std::string& name) { return ReadAs(KindOfName(path), name); });
    std::vector<std::string> sentences = Sentences(path, expected, written);
    for (const std::string& lost : output.NotKept()) {
        sentences.push_back(fmt::format("{}: {}", Shown(path), lost));
    }
    output.Commit();
    return sentences;
}

}  // namespace stmdcm
