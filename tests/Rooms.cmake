# The test programs' sources, a room each.

add_room_tests(TorvTests
    Torv/AsciiTest.cpp
    Torv/AssertTest.cpp
    Torv/BytePairsTest.cpp
    Torv/EncodingTest.cpp
    Torv/FactoryTest.cpp
    Torv/FormatTest.cpp
    Torv/GenericExceptionTest.cpp
    Torv/NoFactoryExceptionTest.cpp
    Torv/NumberTest.cpp
    Torv/RegexTest.cpp
    Torv/ScopeGuardTest.cpp
    Torv/SystemErrorTest.cpp
    Torv/TextTest.cpp
    Torv/VariantInvalidOperationExceptionTest.cpp
    Torv/VariantIteratorTest.cpp
    Torv/VariantTest.cpp
    Torv/Data/FileReaderTest.cpp
    Torv/Data/IniFileTest.cpp
    Torv/FileSystem/FileTest.cpp
    Torv/FileSystem/PathTest.cpp
    Torv/IO/FileStreamTest.cpp
    Torv/IO/IStreamTest.cpp
    Torv/IO/MemoryMappedFileTest.cpp
    Torv/IO/StringStreamTest.cpp
    Torv/Json/ArrayTest.cpp
    Torv/Json/IJsonableTest.cpp
    Torv/Json/JsonTest.cpp
    Torv/Json/ObjectTest.cpp
    Torv/Log/ILogTest.cpp
    Torv/Log/LogNullTest.cpp
    Torv/Log/LogStringTest.cpp
    Torv/Log/LoggingRootDirectoryTest.cpp
    Torv/Security/Endecryptor/OptionsTest.cpp)

add_room_tests(PaperTests
    JobParser/paper/PaperSizeManagerTest.cpp
    JobParser/paper/PaperUtilsTest.cpp)

add_room_tests(ModelTests
    JobParser/model/BaseParserTest.cpp
    JobParser/model/ChunkFirstPageStartTest.cpp
    JobParser/model/ChunkFormFeedTest.cpp
    JobParser/model/ChunkRawDataTest.cpp
    JobParser/model/ChunkTextTest.cpp
    JobParser/model/ChunkUelTest.cpp
    JobParser/model/FinishingTest.cpp
    JobParser/model/GlobalParserTest.cpp
    JobParser/model/JobFileTest.cpp
    JobParser/model/JobInfoTest.cpp
    JobParser/model/JobMetadataTest.cpp
    JobParser/model/JobTest.cpp
    JobParser/model/PdlTest.cpp
    JobParser/model/ReflectionTest.cpp
    JobParser/model/SerializationContextTest.cpp
    JobParser/model/UnexpectedEndOfFileExceptionTest.cpp
    JobParser/model/UnserializationContextTest.cpp)

add_room_tests(LanguagesTests
    JobParser/languages/ChunkPjlCmdBase64StringTest.cpp
    JobParser/languages/ChunkPjlCmdTest.cpp
    JobParser/languages/PjlFinishingTest.cpp
    JobParser/languages/PjlParserTest.cpp
    JobParser/languages/PjlSetCommandTest.cpp
    JobParser/languages/PjlTokensTest.cpp)

add_room_tests(FrameTests
    JobParser/LibraryTest.cpp
    JobParser/ParseJobInfoTest.cpp
    JobParser/ParserTest.cpp)

add_subdirectory(corpus)
