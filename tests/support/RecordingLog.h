#pragma once

#include <mutex>
#include <string>
#include <vector>

#include "Torv/Log/ILog.h"

/// Keeps every message that is written to it, on any thread.
class RecordingLog : public Torv::Log::ILog
{
public:
    struct Message {
        int level;
        std::string text;
        std::string details;
        bool flag;
        std::string sourceFile;
        int line;
    };

    /// Is enabled for the levels up to the one given.
    explicit RecordingLog(int highestLevel) : m_highestLevel(highestLevel) {}

    bool isEnabled(int level) const override { return level <= m_highestLevel; }
    void write(int level, const std::string& message, const std::string& details, bool flag,
               const char* sourceFile, int line) override
    {
        const std::lock_guard lock(m_mutex);
        messages.push_back({level, message, details, flag, sourceFile, line});
    }

    std::vector<Message> messages;

private:
    int m_highestLevel;
    std::mutex m_mutex;
};
