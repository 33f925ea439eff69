#ifndef ORVEL_TESTING_SCRIPT_H
#define ORVEL_TESTING_SCRIPT_H

#include <array>
#include <cstddef>
#include <deque>

#include "orvel/analytics/testing/answer.h"

namespace Orvel::Analytics::Testing {

/// Which answer comes when.
class Script {
  public:
    /// @throws std::invalid_argument when the step cannot be answered so.
    void answer(Step step, Answer answer);
    void answerNext(Step step, Answer answer);
    void acceptEverything();

    /// The answer to a step that is taken now.
    [[nodiscard]] Answer take(Step step);

  private:
    struct Plan {
        Answer always;
        std::deque<Answer> next;
    };

    Plan& planOf(Step step) { return plans_.at(static_cast<std::size_t>(step)); }

    static constexpr std::size_t kSteps = static_cast<std::size_t>(Step::GetDocumentURLs) + 1;
    std::array<Plan, kSteps> plans_;
};

}  // namespace Orvel::Analytics::Testing

#endif
