// One manager that several threads use at once.

#include <array>
#include <atomic>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

#include "JobParser/paper/PaperSizeManager.h"
#include "tests/JobParser/paper/PaperSupport.h"

#include "Torv/Data/IniFile.h"

namespace JobParser
{
namespace
{

TEST(PaperSizeManagerThreads, MayAskWhileAnotherAddsAndConfigures)
{
    PaperSizeManager papers;
    const ConfigFile file("[JobParser]\npaperSizeTolerance = 2\naliasA4 = Office, 2095x2970\n");
    Torv::Data::IniFile ini;
    file.openWith(ini);
    std::atomic<bool> done = false;
    std::atomic<int> wrong = 0;
    const auto ask = [&] {
        while (!done) {
            const Paper bySize = papers.paperById("2100x2970", true);
            const Paper bySizeText = papers.paperBySize("2970 x 2100");
            const Paper custom = papers.paperByCustomSize({210, 297, PaperUnknown});
            if ((bySize != PaperA4 && bySize != PaperLetter) ||
                (bySizeText != PaperA4 && bySizeText != PaperLetter))
                ++wrong;
            if (custom != PaperUnknown && custom != PaperA4 && custom != PaperLetter)
                ++wrong;
            if (papers.paperName(210, 297) != "A4" || papers.paperById("legal", false) != PaperLegal)
                ++wrong;
        }
    };

    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back(ask);
    for (int i = 0; i < 300; ++i) {
        papers.add("name" + std::to_string(i), PaperA3);
        papers.add(std::to_string(2100 + i % 3) + "x2970", PaperLetter);
        papers.addDefaultPapers();
        papers.loadConfig(ini);
    }
    done = true;
    for (std::thread& thread : threads)
        thread.join();

    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(papers.paperById("NAME299", false), PaperA3);
    EXPECT_EQ(papers.paperById("OFFICE", false), PaperA4);
}

TEST(PaperSizeManagerThreads, NeverKeepAnAnswerThatAnAddMadeOutdated)
{
    PaperSizeManager papers;
    std::atomic<bool> done = false;
    std::thread asking([&] {
        while (!done)
            papers.paperById("2100x2970", true);
    });
    constexpr std::array<Paper, 3> turns{PaperLegal, PaperLedger, PaperLetter};

    int outdated = 0;
    for (int i = 0; i < 2000; ++i) {
        const Paper paper = turns[static_cast<std::size_t>(i) % turns.size()];
        papers.add("A4", paper);
        if (papers.paperById("2100x2970", true) != paper)
            ++outdated;
    }
    done = true;
    asking.join();

    EXPECT_EQ(outdated, 0);
}

TEST(PaperSizeManagerThreads, MayAllBeTheFirstToAsk)
{
    for (int round = 0; round < 20; ++round) {
        const PaperSizeManager papers;
        std::array<Paper, 4> answers{};

        std::vector<std::thread> threads;
        for (std::size_t i = 0; i < answers.size(); ++i)
            threads.emplace_back(
                [&papers, &answers, i] { answers[i] = papers.paperById("2970x2100", true); });
        for (std::thread& thread : threads)
            thread.join();

        for (const Paper answer : answers)
            EXPECT_EQ(answer, PaperA4);
    }
}

} // namespace
} // namespace JobParser
