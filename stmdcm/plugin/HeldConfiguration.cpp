#include "stmdcm/plugin/HeldConfiguration.h"

#include <fmt/format.h>

#include <algorithm>
#include <sstream>
#include <utility>

#include "stmdcm/Failure.h"
#include "stmdcm/change/NewCapture.h"
#include "stmdcm/plugin/Manager.h"
#include "stmdcm/plugin/PluginSession.h"
#include "stmdcm/plugin/WorkingFile.h"
#include "stmdcm/reading/ConfigurationReader.h"
#include "trace/format/StmPropertyTable.h"

namespace stmdcm {

using namespace Zu::Wep::Trace;

namespace {

/// GetUsecase of this record gives the first use case of each source alone. Its text has them all.
std::vector<PmiUsecase> ReadPmi(const PMIUsecaseRecordIF& record) {
    std::string text;
    record.SaveAllRecords(text);
    std::istringstream in(text);
    PMIUsecaseRecord copy;
    copy.RetrieveAllRecords(in);
    return ItemsOf(copy);
}

}  // namespace

Configuration ReadConfiguration(const Manager& manager) {
    Configuration configuration;
    for (const StmProperty& row : kStmProperties) {
        configuration.properties.push_back(PropertyOf(row, manager.Property(row.name)));
    }
    configuration.sc = ItemsOf<ScUsecase>(manager.ScRecord());
    configuration.cpt = ItemsOf<CptUsecase>(manager.CptRecord());
    configuration.pmi = ReadPmi(manager.PmiRecord());
    return configuration;
}

std::vector<ObjectFile> ObjectFilesHeldBy(const Manager& manager, const std::vector<ObjectFile>& recorded) {
    std::vector<ObjectFile> held;
    for (ObjectFile file : recorded) {
        file.path = manager.ObjectFile(file.name);
        file.LookAtDisk();
        file.recorded = file.modified.value_or(file.recorded);
        held.push_back(std::move(file));
    }
    return held;
}

std::string SaveIntoCapture(PluginSession& session, Manager& manager) {
    std::string path = session.WorkingFile("saved.tdf");
    WriteWorkingFile(path, NewCapture({DeviceSection()}));
    session.log.Take();
    if (!manager.Save(path, TRACE_DATA_FILE_TDF)) {
        throw Failure(session.home.Path().parent_path().string(),
                      fmt::format("what the plug-in holds can't be read back by way of this directory{}",
                                  session.log.WhyFailed(path)));
    }
    return path;
}

}  // namespace stmdcm
