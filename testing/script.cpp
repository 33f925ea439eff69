#include "testing/script.h"

#include <stdexcept>
#include <utility>

namespace Orvel::Analytics::Testing {
namespace {

void requireThatItFits(Step step, const Answer& answer) {
    const bool isReply =
        answer.kind() == Answer::Kind::Error || answer.kind() == Answer::Kind::Text;
    if (step == Step::Connect && isReply) {
        throw std::invalid_argument("no reply comes before there is a connection");
    }
}

}  // namespace

void Script::answer(Step step, Answer answer) {
    requireThatItFits(step, answer);
    planOf(step).always = std::move(answer);
}

void Script::answerNext(Step step, Answer answer) {
    requireThatItFits(step, answer);
    planOf(step).next.push_back(std::move(answer));
}

void Script::acceptEverything() { plans_ = {}; }

Answer Script::take(Step step) {
    Plan& plan = planOf(step);
    if (plan.next.empty()) {
        return plan.always;
    }
    Answer answer = std::move(plan.next.front());
    plan.next.pop_front();
    return answer;
}

}  // namespace Orvel::Analytics::Testing
