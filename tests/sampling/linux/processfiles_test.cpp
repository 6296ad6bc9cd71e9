#include "sampling/linux/linuxsystemqueries.h"
#include "sampling/linux/processdirectory.h"
#include "sampling/linux/processfiles.h"
#include "tests/sampling/linux/support/agent.h"
#include "tests/sampling/linux/support/processtree.h"
#include "tests/support/testmain.h"

#include <sys/prctl.h>
#include <unistd.h>

#include <QtTest>

#include <filesystem>

namespace {

const std::string processRoot = "/proc";

/// A folder with copies of the agent's program under names of the test's choice.
class Programs
{
public:
    Programs() { m_directory.setAutoRemove(false); }
    // QTemporaryDir does not find files again whose names are no text.
    ~Programs() { std::filesystem::remove_all(m_directory.path().toStdString()); }
    Programs(const Programs &) = delete;
    Programs &operator=(const Programs &) = delete;

    std::string copyAs(const std::string &name) const
    {
        std::string path = m_directory.path().toStdString() + '/' + name;
        std::filesystem::copy_file(Agent::defaultProgram(), path,
                                   std::filesystem::copy_options::overwrite_existing);
        return path;
    }

    /// Replaces what has the name by a link to `target`.
    std::string linkAs(const std::string &name, const std::string &target) const
    {
        std::string path = m_directory.path().toStdString() + '/' + name;
        std::filesystem::remove(path);
        std::filesystem::create_symlink(target, path);
        return path;
    }

private:
    QTemporaryDir m_directory;
};

} // namespace

class ProcessFilesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theImagePathIsTheExecutables()
    {
        const auto self = static_cast<std::uint32_t>(::getpid());
        QCOMPARE(m_files.imagePath(self), QCoreApplication::applicationFilePath().toStdString());
        const Agent agent;
        QCOMPARE(m_files.imagePath(agent.pid()), Agent::defaultProgram());
    }

    void aPathIsTakenByteByByte_data()
    {
        QTest::addColumn<QByteArray>("name");
        QTest::newRow("blanks") << QByteArray("two words ");
        QTest::newRow("non-ASCII") << QByteArray("Überwachung-監視");
        QTest::newRow("invalid UTF-8") << QByteArray("broken\xff\xc3.bin");
        QTest::newRow("line feed") << QByteArray("two\nlines");
    }

    void aPathIsTakenByteByByte()
    {
        QFETCH(QByteArray, name);
        const Programs programs;
        const std::string path = programs.copyAs(name.toStdString());
        const Agent agent(path);
        QCOMPARE(m_files.imagePath(agent.pid()), path);
    }

    void aDeletedExecutableKeepsItsPath()
    {
        const Programs programs;
        const std::string path = programs.copyAs("removed");
        const Agent agent(path);
        QVERIFY(std::filesystem::remove(path));
        QCOMPARE(m_files.imagePath(agent.pid()), path);
    }

    void aReplacedExecutableKeepsItsPath()
    {
        const Programs programs;
        const std::string path = programs.copyAs("updated");
        const Agent agent(path);
        std::filesystem::rename(programs.copyAs("update"), path);
        QCOMPARE(m_files.imagePath(agent.pid()), path);
    }

    void anExecutableMayBeNamedAsADeletedOneIsShown()
    {
        const Programs programs;
        const std::string path = programs.copyAs("kept (deleted)");
        const Agent kept(path);
        QCOMPARE(m_files.imagePath(kept.pid()), path);

        const std::string shorter = programs.copyAs("other");
        const Agent other(shorter);
        std::filesystem::remove(shorter);
        programs.copyAs("other (deleted)");
        QCOMPARE(m_files.imagePath(other.pid()), shorter);
    }

    void aPathMayHaveAnyLength()
    {
        ProcessTree tree;
        tree.addProcess(7);
        for (const qsizetype length : {511, 512, 513, 1024, 4000}) {
            const QByteArray path = '/' + QByteArray(length - 1, 'x');
            tree.setExecutable(7, path);
            QCOMPARE(ProcessFiles(tree.root()).imagePath(7), path.toStdString());
        }
    }

    void aProcessWithoutReadablePathHasNone()
    {
        ProcessTree tree;
        tree.addProcess(7);
        QCOMPARE(ProcessFiles(tree.root()).imagePath(7), std::string());
        QCOMPARE(ProcessFiles(tree.root()).imagePath(8), std::string());
        QCOMPARE(m_files.imagePath(0), std::string());
        QCOMPARE(m_files.imagePath(0xffffffff), std::string());
    }

    void aLinkThatIsHeldIsReadInsteadOfThePath()
    {
        Agent agent;
        const FileDescriptor link = ProcessDirectory(processRoot).openImageLink(agent.pid());
        QCOMPARE(m_files.imagePath(0, &link), Agent::defaultProgram());
        agent.exit();
        QCOMPARE(m_files.imagePath(0, &link), std::string());
    }

    void theImagePathFollowsAnOwnerOfSocketsIntoAnotherProgram()
    {
        const Programs programs;
        const std::string first = programs.copyAs("first");
        const std::string second = programs.copyAs("second");
        const std::string run = programs.linkAs("run", first);
        Agent agent(run);
        agent.listenTcp();
        LinuxSystemQueries queries;
        for (int round = 0; round < 2; ++round) {
            QVERIFY(queries.tcpTable());
            QCOMPARE(queries.imagePath(agent.pid()), first);
        }
        programs.linkAs("run", second);
        agent.exec();
        QCOMPARE(queries.imagePath(agent.pid()), second);
        QVERIFY(queries.tcpTable());
        QCOMPARE(queries.imagePath(agent.pid()), second);
    }

    void aProcessThatGetsAnEndedOnesIdHasItsOwnImagePath()
    {
        const Programs programs;
        const std::string first = programs.copyAs("first");
        const std::string second = programs.copyAs("second");
        LinuxSystemQueries queries;
        // The system's other processes take ids as well.
        for (int attempt = 0; attempt < 100; ++attempt) {
            Agent owner(first);
            owner.listenTcp();
            QVERIFY(queries.tcpTable());
            const std::uint32_t pid = owner.pid();
            QCOMPARE(queries.imagePath(pid), first);
            owner.exit();
            if (!aimAtPid(pid))
                QSKIP("the ids of processes are not ours to choose");
            const Agent namesake(second);
            if (namesake.pid() != pid)
                continue;
            QCOMPARE(queries.imagePath(pid), second);
            return;
        }
        QFAIL("no process got the id of an ended one");
    }

    void theNameIsTheKernels()
    {
        const Agent agent;
        QCOMPARE(m_files.name(agent.pid()), "tovan_agent");
        ::prctl(PR_SET_NAME, "two words ä\xff");
        QCOMPARE(m_files.name(static_cast<std::uint32_t>(::getpid())), "two words ä\xff");
    }

    void oneTrailingLineFeedIsNotPartOfTheName()
    {
        ProcessTree tree;
        tree.addProcess(7, "odd\n");
        tree.addProcess(8, "two\nlines");
        tree.addProcess(9, "");
        const ProcessFiles files(tree.root());
        QCOMPARE(files.name(7), "odd\n");
        QCOMPARE(files.name(8), "two\nlines");
        QCOMPARE(files.name(9), std::string());
    }

    void aProcessThatEndedHasNeitherNameNorPath()
    {
        Agent agent;
        const std::uint32_t pid = agent.pid();
        QVERIFY(m_files.name(pid));
        agent.exit();
        QCOMPARE(m_files.name(pid), std::nullopt);
        QCOMPARE(m_files.imagePath(pid), std::string());
    }

    void withoutAProcessFileSystemThereIsNoName()
    {
        const ProcessFiles files("/nowhere");
        QCOMPARE(files.name(1), std::nullopt);
        QCOMPARE(files.imagePath(1), std::string());
    }

private:
    ProcessFiles m_files{processRoot};
};

TOVAN_GUILESS_TEST(processfiles_test, ProcessFilesTest)
#include "processfiles_test.moc"
