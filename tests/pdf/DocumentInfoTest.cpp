#include "pdf/DocumentInfo.h"

#include <gtest/gtest.h>

#include "pdf/PdfParserException.h"

namespace Pdf::Parser
{
namespace
{

class Embedding : public testing::Test
{
protected:
    void put(unsigned number, Value value) { info.embeddable[{number, 0}].value = std::move(value); }

    std::string resource(Value value)
    {
        EXPECT_EQ(&info.embedResource(value), &value);
        return value.serialize();
    }

    std::string contents(Value value)
    {
        info.embedContents(value);
        return value.index() == 0 ? "None" : value.serialize();
    }

    DocumentInfo info;
};

TEST_F(Embedding, ReplacesAResourceByWhatItLeadsTo)
{
    put(1, Array({Value(1.0)}));
    put(2, Reference{1, 0});
    put(3, Reference{2, 0});
    put(4, Reference{9, 0});

    EXPECT_EQ(resource(Reference{1, 0}), "[ 1]");
    EXPECT_EQ(resource(Reference{3, 0}), "[ 1]");
    EXPECT_EQ(resource(Reference{3, 0}), "[ 1]");
    EXPECT_EQ(resource(Reference{4, 0}), "<<>>");
    EXPECT_EQ(resource(Reference{8, 0}), "<<>>");
    EXPECT_EQ(resource(Reference{1, 1}), "<<>>");
    EXPECT_EQ(resource(Value()), "<<>>");
    EXPECT_EQ(resource(5.0), " 5");
    EXPECT_EQ(resource(Null()), " null");
}

TEST_F(Embedding, BuildsWhatIsLookedUp)
{
    info.addEmbeddableText(1, "[1]");
    info.addEmbeddableText(2, "1 0 R");
    info.addEmbeddableText(3, "[3]");

    EXPECT_EQ(resource(Reference{2, 0}), "[ 1]");
    EXPECT_EQ(resource(Reference{2, 0}), "[ 1]");
    EXPECT_EQ(resource(Reference{3, 1}), "<<>>");
    EXPECT_EQ(contents(Reference{3, 0}), "[ 3]");
}

TEST_F(Embedding, CountsATextBeforeAnObjectUntilItIsRemoved)
{
    put(1, Array({Value(2.0)}));
    info.addEmbeddableText(1, "[1]");

    EXPECT_EQ(resource(Reference{1, 0}), "[ 1]");

    info.removeEmbeddableText(1);

    EXPECT_EQ(resource(Reference{1, 0}), "[ 2]");
}

TEST_F(Embedding, FindsLoopsOfWhatIsNotBuiltYet)
{
    info.addEmbeddableText(1, "2 0 R");
    info.addEmbeddableText(2, "1 0 R");
    Value value = Reference{1, 0};

    EXPECT_THROW(info.embedResource(value), PdfParserException);
}

TEST_F(Embedding, ReplacesContentsByAnArrayAlone)
{
    put(1, Array({Value(Reference{7, 0})}));
    put(2, Reference{1, 0});
    put(3, Dictionary());
    put(4, Reference{3, 0});
    put(5, Reference{9, 0});

    EXPECT_EQ(contents(Reference{1, 0}), "[ 7 0 R]");
    EXPECT_EQ(contents(Reference{2, 0}), "[ 7 0 R]");
    EXPECT_EQ(contents(Reference{3, 0}), " 3 0 R");
    EXPECT_EQ(contents(Reference{4, 0}), " 3 0 R");
    EXPECT_EQ(contents(Reference{4, 0}), " 3 0 R") << "once more, when the end of the chain is known";
    EXPECT_EQ(contents(Reference{5, 0}), " 9 0 R");
    EXPECT_EQ(contents(Reference{8, 0}), " 8 0 R");
    EXPECT_EQ(contents(Value()), "None");
    EXPECT_EQ(contents(Array()), "[]");
    EXPECT_EQ(contents(5.0), " 5");
}

TEST_F(Embedding, RejectsReferencesThatLeadToEachOther)
{
    put(1, Reference{2, 0});
    put(2, Reference{1, 0});
    put(3, Reference{3, 0});

    for (const unsigned number : {1U, 2U, 3U}) {
        for (const bool isResource : {true, false}) {
            try {
                if (isResource)
                    resource(Reference{number, 0});
                else
                    contents(Reference{number, 0});
                ADD_FAILURE();
            } catch (const PdfParserException& error) {
                EXPECT_STREQ(error.what(), "Resource references loop");
            }
        }
    }
}

// Each reference of a chain of 100000 is followed; a chain that were walked each time would take hours.
TEST_F(Embedding, FollowsLongChainsFromEachOfTheirPlaces)
{
    constexpr unsigned length = 100000;
    for (unsigned number = 1; number < length; ++number)
        put(number, Reference{number + 1, 0});
    put(length, Array());

    for (unsigned number = 1; number < length; ++number)
        ASSERT_EQ(contents(Reference{number, 0}), "[]");
}

TEST_F(Embedding, ForgetsWhatMayBeEmbedded)
{
    put(1, Reference{2, 0});
    put(2, Array());
    resource(Reference{1, 0});

    info.clearEmbeddable();

    EXPECT_TRUE(info.embeddable.empty());
    EXPECT_EQ(resource(Reference{1, 0}), "<<>>");
}

} // namespace
} // namespace Pdf::Parser
