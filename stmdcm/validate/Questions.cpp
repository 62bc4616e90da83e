#include "stmdcm/validate/Questions.h"

namespace stmdcm::validate {

std::vector<const Question*> AllQuestions() {
    std::vector<const Question*> all;
    for (const auto& group : {LibraryQuestions(), LifeQuestions(), PropertyQuestions(), TextQuestions(),
                              SettingsQuestions(), CaptureQuestions(), DamageQuestions(), ContainerQuestions(),
                              UsecaseQuestions(), ImageQuestions(), EnvironmentQuestions(), LiveQuestions()}) {
        for (const Question& question : group) {
            all.push_back(&question);
        }
    }
    return all;
}

const Question& LoadsQuestion() { return LibraryQuestions().front(); }

std::string GroupOf(const Question& question) {
    const std::string id = question.id;
    return id.substr(0, id.find('.'));
}

}  // namespace stmdcm::validate
