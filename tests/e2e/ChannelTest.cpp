#include "e2e/Program.h"
#include "support/Printing.h"

#include <csignal>

namespace {

TEST(Channel, refusesWhatItDoesNotKnowAndChangesNothing)
{
    const Home home;
    home.givenFile("a.txt");
    Program program(home);
    program.settle();
    const QJsonObject before = program.state();
    const QJsonArray nodes = program.tree().nodes();
    for (const char* line : {"{\"n\": 1, \"do\": \"fly\"}", "{\"n\": 1}", "{\"n\": 1, \"do\": 7}",
             "[1, 2]", "\"ping\"", "no JSON", "{\"n\": 1, \"do\": \"ping\"", "{}", "\xff\xfe",
             "{\"do\": \"key\", \"key\": \"Nonsense\"}", "{\"do\": \"mouse\", \"type\": \"wave\"}",
             "{\"do\": \"open\", \"id\": \"unknown\"}"}) {
        SCOPED_TRACE(line);
        const QJsonObject answer = program.answerTo(line);
        EXPECT_TRUE(answer["ok"].isBool());
        EXPECT_FALSE(answer["ok"].toBool());
        EXPECT_FALSE(answer["error"].toString().isEmpty());
    }
    EXPECT_EQ(program.state(), before);
    EXPECT_EQ(program.tree().nodes(), nodes);
    EXPECT_EQ(program.quit(), 0);
}

TEST(Channel, givesTheNumberBackAsItCame)
{
    const Home home;
    Program program(home);
    const QJsonObject text = program.answerTo("{\"n\": \"seven\", \"do\": \"ping\"}");
    EXPECT_EQ(text["n"].toString(), "seven");
    EXPECT_EQ(text["result"]["pid"].toInteger(), program.pid());
    EXPECT_TRUE(program.answerTo("{\"n\": null, \"do\": \"ping\"}")["n"].isNull());
    EXPECT_FALSE(program.answerTo("{\"do\": \"ping\"}").contains("n"));
    EXPECT_EQ(program.answerTo("{\"n\": 2, \"do\": \"fly\"}")["n"].toInt(), 2);
    EXPECT_EQ(program.quit(), 0);
}

TEST(Channel, runsWhatStoodThereBeforeTheStart)
{
    const Home home;
    home.folder.makeFile("early", "{\"n\": 1, \"do\": \"settle\"}\n\n{\"n\": 2, \"do\": "
                                  "\"quit\"}\n{\"n\": 3, \"do\": \"ping");
    Program program(home, {{}, {{"CORVELLE_DRIVER", home.path("early")}}});
    EXPECT_EQ(program.ended(), 0);
    const QByteArray answers = home.folder.content("early.out");
    EXPECT_EQ(answers.count('\n'), 2) << answers.toStdString(); // the last line never ended
    EXPECT_TRUE(answers.contains("\"n\":1,\"ok\":true"));
}

TEST(Ending, comesWithNoErrorOnEveryOrderlyWay)
{
    const Home home;
    for (int i = 0; i < 50; ++i)
        home.givenFile(QString("%1.txt").arg(i));
    {
        Program program(home);
        EXPECT_EQ(program.quit(), 0); // in the middle of the first look
    }
    {
        Program program(home);
        program.settle();
        program.key("Ctrl+Q");
        EXPECT_EQ(program.ended(), 0);
    }
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        Program program(home);
        program.settle();
        ::kill(static_cast<pid_t>(program.pid()), signal);
        EXPECT_EQ(program.ended(), 0) << signal;
    }
}

TEST(Ending, waitsForNoLookThatIsUnderWay)
{
    const Home home;
    for (int i = 0; i < 3000; ++i)
        home.givenFile(QString("%1/%2.txt").arg(i / 100).arg(i));
    {
        Program program(home);
        ASSERT_TRUE(waitUntil([&] { return program.tree().paths().size() > 0; }));
        program.terminate();
        EXPECT_EQ(program.ended(5'000), 0);
    }
    Program program(home);
    program.settle();
    EXPECT_EQ(program.tree().paths().size(), 3030);
    EXPECT_FALSE(program.tree().hasTwins());
    EXPECT_EQ(program.quit(), 0);
}

} // namespace
