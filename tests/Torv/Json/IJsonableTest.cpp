#include "Torv/Json/IJsonable.h"

#include <gtest/gtest.h>
#include <memory>

namespace Torv::Json
{
namespace
{

class Word : public IJsonable
{
public:
    explicit Word(bool& ended) : m_ended(ended) {}
    ~Word() override { m_ended = true; }
    std::string toJson() const override { return "\"word\""; }

private:
    bool& m_ended;
};

TEST(IJsonable, IsUsedAndEndedThroughTheInterface)
{
    bool ended = false;
    std::unique_ptr<const IJsonable> word = std::make_unique<Word>(ended);

    EXPECT_EQ(word->toJson(), "\"word\"");
    word.reset();

    EXPECT_TRUE(ended);
}

} // namespace
} // namespace Torv::Json
