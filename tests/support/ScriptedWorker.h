#pragma once

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

#include "JobParser/Library.h"
#include "tests/Torv/TemporaryDirectory.h"
#include "tests/support/Children.h"

/// Sets the library up with workers that follow a script of TestWorker, and without any when it goes. The
/// requests that they get are kept.
class ScriptedWorker
{
public:
    explicit ScriptedWorker(const std::string& script) : ScriptedWorker(script, JobParser::Library::Options())
    {
    }

    /// Takes from the options what is not given by the script.
    ScriptedWorker(const std::string& script, JobParser::Library::Options options)
    {
        const std::filesystem::path worker = testWorkerPath;
        options.directory = worker.parent_path().string();
        options.executable = worker.filename().string();
        options.arguments = "each log " + m_directory.path("requests") + " " + script;
        options.processCount = 1;
        JobParser::Library::init(options);
    }
    ~ScriptedWorker() { JobParser::Library::init({}); }
    ScriptedWorker(const ScriptedWorker&) = delete;
    ScriptedWorker& operator=(const ScriptedWorker&) = delete;

    /// A script that answers with this text and a line feed.
    static std::string answering(std::string_view text) { return "print " + encoded(text) + "%0A"; }

    /// A text as the action `print` takes it.
    static std::string encoded(std::string_view text)
    {
        std::string result;
        for (const char byte : text) {
            char code[4];
            std::snprintf(code, sizeof code, "%%%02X",
                          static_cast<unsigned>(static_cast<unsigned char>(byte)));
            result += code;
        }
        return result;
    }

    /// The requests so far, a line each.
    std::string requests() const
    {
        std::ifstream file(m_directory.path("requests"));
        return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    }

private:
    Torv::Test::TemporaryDirectory m_directory;
};
