#pragma once

#include "app/base/Messages.h"

#include <deque>
#include <string>
#include <vector>

namespace wagemill::test {

/// Stands in for message boxes: keeps what was shown and gives the answers that were prepared (Ok, or Yes for a
/// question).
class RecordedMessages : public Messages {
public:
    RecordedMessages() { setMessages(this); }
    ~RecordedMessages() override { setMessages(nullptr); }

    MessageAnswer show(const Message& message) override
    {
        shown.push_back(message);
        if (message.buttons == MessageButtons::Ok)
            return MessageAnswer::Ok;
        if (answers.empty())
            return MessageAnswer::Yes;
        const MessageAnswer answer = answers.front();
        answers.pop_front();
        return answer;
    }

    std::vector<std::string> texts() const
    {
        std::vector<std::string> result;
        for (const Message& message : shown)
            result.push_back(message.text);
        return result;
    }

    /// The step numbers named by the error dialogs that were shown, in their order.
    std::vector<int> failedSteps() const
    {
        std::vector<int> steps;
        for (const Message& message : shown)
            if (const std::size_t at = message.text.find("at line "); at != std::string::npos)
                steps.push_back(std::stoi(message.text.substr(at + 8)));
        return steps;
    }

    std::vector<Message> shown;
    std::deque<MessageAnswer> answers;
};

} // namespace wagemill::test
