// Queues that rlx-queue makes, changes and refuses to make.
#include <gtest/gtest.h>

#include <filesystem>

#include "spooler/spooler_test.h"

namespace rlx::testing {
namespace {

class CupsQueue : public CupsTest {
 protected:
  /// The line of an option as lpoptions shows it; the default has a star.
  std::string option(const std::string& queue, const std::string& name) {
    const std::string all = server_.run({"lpoptions", "-p", queue, "-l"}).output;
    const std::size_t begin = all.find(name + "/");
    return begin == std::string::npos ? "" : all.substr(begin, all.find('\n', begin) - begin);
  }
  std::string device(const std::string& queue) {
    return server_.run({"lpstat", "-v", queue}).output;
  }
  std::string ppd(const std::string& queue) {
    return read_file(server_.directory() + "/settings/ppd/" + queue + ".ppd");
  }
  bool has_queue(const std::string& queue) {
    return server_.run({"lpstat", "-v", queue}).status == 0;
  }
};

TEST_F(CupsQueue, FormsAreChoices) {
  put_form("a-form_2", "print 1\n");
  put_form("not.a.form", "print 1\n");
  put_form("NONE", "print 1\n");
  put_form("label", "print 1\n");
  put_form(std::string(41, 'x'), "print 1\n");
  std::filesystem::create_directory(forms() + "/fcbe/FOLDER");
  const Outcome outcome = server_.rlx_queue(
      {"add", "new", "--device", printer_.uri(), "--forms", forms(), "--default-form", "a-form_2"});
  EXPECT_EQ(outcome.status, 0) << outcome.messages;
  EXPECT_EQ(option("new", "form"), "form/Form: None INVOICE LABEL *a-form_2");
  for (const char* const left_out :
       {"not.a.form is left out", "NONE is left out", "label is left out", "xx is left out"}) {
    EXPECT_NE(outcome.messages.find(left_out), std::string::npos) << outcome.messages;
  }
}

TEST_F(CupsQueue, FirstFolderWithAFormWins) {
  const std::string more = make_directory("forms");
  // Wrong, but hidden by the one of the first folder.
  write_file(more + "/fcbe/LABEL", "print 300\n");
  write_file(more + "/fcbe/MORE", "print 1\n");
  server_.add_queue("two", printer_, {"--forms", forms(), "--forms", more});
  EXPECT_EQ(option("two", "form"), "form/Form: *None INVOICE LABEL MORE");
  EXPECT_NE(ppd("two").find("*rlxFormDirectories: \"" + forms() + ":" + more + "\"\n"),
            std::string::npos);
}

TEST_F(CupsQueue, FormThatFcbcheckRefuses) {
  put_form("WRONG", "print 4\nlpi 5 6\n");
  const std::string before = ppd("q");
  const Outcome refused = server_.rlx_queue({"refresh", "q"});
  EXPECT_EQ(refused.status, 1);
  const std::string path = forms() + "/fcbe/WRONG";
  const std::string words = run_command({{installed_tree() + "/bin/fcbcheck", path}}).output +
                            run_command({{installed_tree() + "/bin/fcbcheck", path}}).messages;
  EXPECT_NE(words.find(path + ":2: "), std::string::npos) << words;
  EXPECT_NE(refused.messages.find(words), std::string::npos) << refused.messages;
  EXPECT_EQ(ppd("q"), before);
  EXPECT_EQ(
      server_.rlx_queue({"add", "new", "--device", printer_.uri(), "--forms", forms()}).status, 1);
  EXPECT_FALSE(has_queue("new"));
}

/// In mode 7 a form is cut to 14 inches, and its lines have to go into that.
TEST_F(CupsQueue, FormIsCheckedForTheModeOfTheQueue) {
  put_form("LONG", "print 1 120000\nlpi 2400 49\n");
  EXPECT_EQ(server_.rlx_queue({"refresh", "q"}).status, 0);
  const Outcome refused = server_.rlx_queue({"refresh", "q", "--mode", "7"});
  EXPECT_EQ(refused.status, 1);
  EXPECT_NE(refused.messages.find("are taller than the form, 100800"), std::string::npos)
      << refused.messages;
}

/// A queue whose settings stop every job is not made.
TEST_F(CupsQueue, SettingsThatDoNotGoTogether) {
  for (const std::vector<std::string>& settings : std::vector<std::vector<std::string>>{
           {"--resolution", "600"},
           {"--mode", "2", "--resolution", "240"},
           {"--capabilities", "D240", "--resolution", "400", "--mode", "3"}}) {
    std::vector<std::string> words{"add", "new", "--device", printer_.uri()};
    words.insert(words.end(), settings.begin(), settings.end());
    const Outcome refused = server_.rlx_queue(words);
    EXPECT_EQ(refused.status, 1);
    EXPECT_NE(refused.messages.find("the queue is set up wrongly: --resolution "),
              std::string::npos)
        << refused.messages;
    EXPECT_FALSE(has_queue("new"));
  }
  EXPECT_EQ(server_.rlx_queue({"refresh", "q", "--resolution", "600"}).status, 1);
  EXPECT_NE(ppd("q").find("*rlxResolution: \"\"\n"), std::string::npos);
}

/// A line of a PPD has at most 255 bytes.
TEST_F(CupsQueue, FoldersWhoseNamesAreTooLong) {
  constexpr std::size_t kMost = 232;
  std::string deep = forms() + '/' + std::string(100, 'x') + '/';
  deep.resize(kMost, 'x');
  write_file(deep + "/fcbe/DEEP", "print 1\n");
  server_.add_queue("deep", printer_, {"--forms", deep});
  EXPECT_EQ(option("deep", "form"), "form/Form: *None DEEP");
  deep += 'x';
  write_file(deep + "/fcbe/DEEP", "print 1\n");
  const Outcome refused =
      server_.rlx_queue({"add", "new", "--device", printer_.uri(), "--forms", deep});
  EXPECT_EQ(refused.status, 1);
  EXPECT_NE(refused.messages.find("too long for a queue: " + deep + " (at most 232 bytes)"),
            std::string::npos)
      << refused.messages;
  EXPECT_FALSE(has_queue("new"));
}

TEST_F(CupsQueue, RefreshKeepsSettings) {
  server_.add_queue("kept", printer_,
                    {"--forms", forms(), "--mode", "3", "--capabilities", "D240!D400!f1",
                     "--resolution", "400", "--flags", "AD", "--description", "Invoices",
                     "--location", "Room 1", "--default-form", "LABEL"});
  ASSERT_EQ(
      server_
          .run({"lpadmin", "-p", "kept", "-o", "lpi=8", "-o", "form=INVOICE", "-o", "PageSize=A3"})
          .status,
      0);
  put_form("NEW", "print 1\n");
  const Outcome outcome = server_.rlx_queue({"refresh", "kept"});
  EXPECT_EQ(outcome.status, 0) << outcome.messages;
  EXPECT_EQ(outcome.output, "kept: forms INVOICE LABEL NEW\n");
  EXPECT_EQ(option("kept", "form"), "form/Form: None *INVOICE LABEL NEW");
  EXPECT_EQ(option("kept", "lpi"), "lpi/Lines per Inch: Default 3 4 6 *8 12");
  EXPECT_EQ(option("kept", "PageSize"), "PageSize/Media Size: *A3 A4 A5 B4 B5 Letter");
  for (const std::string line :
       {"*rlxEmulationMode: \"3\"\n", "*rlxCapabilities: \"D240!D400!f1\"\n",
        "*rlxResolution: \"400\"\n", "*rlxFilterFlags: \"AD\"\n"}) {
    EXPECT_NE(ppd("kept").find(line), std::string::npos) << line;
  }
  const std::string told = server_.run({"lpstat", "-l", "-p", "kept"}).output;
  EXPECT_NE(told.find("Description: Invoices\n"), std::string::npos) << told;
  EXPECT_NE(told.find("Location: Room 1\n"), std::string::npos) << told;
  EXPECT_EQ(device("kept"), "device for kept: " + printer_.uri() + "/?snmp=false\n");
}

TEST_F(CupsQueue, RefreshDoesNotLoseTheDefaultForm) {
  server_.add_queue("kept", printer_, {"--forms", forms(), "--default-form", "LABEL"});
  remove_form("LABEL");
  const Outcome refused = server_.rlx_queue({"refresh", "kept"});
  EXPECT_EQ(refused.status, 1);
  EXPECT_NE(refused.messages.find("no form LABEL"), std::string::npos) << refused.messages;
  EXPECT_EQ(server_.rlx_queue({"refresh", "kept", "--default-form", "INVOICE"}).status, 0);
  EXPECT_EQ(option("kept", "form"), "form/Form: None *INVOICE");
}

TEST_F(CupsQueue, WithoutASchedulerSaysSo) {
  server_.stop();
  for (const std::vector<std::string>& words :
       {std::vector<std::string>{"add", "new", "--device", printer_.uri()},
        {"refresh", "q"},
        {"remove", "q"},
        {"list"}}) {
    const Outcome outcome = server_.rlx_queue(words);
    EXPECT_EQ(outcome.status, 1) << words.front();
    EXPECT_NE(outcome.messages.find("CUPS does not answer"), std::string::npos)
        << words.front() << ": " << outcome.messages;
  }
}

TEST_F(CupsQueue, SocketsAreNotAskedBySnmp) {
  for (const auto& [given, kept] :
       {std::pair("socket://h:9100", "socket://h:9100/?snmp=false"),
        {"socket://h:9100/", "socket://h:9100/?snmp=false"},
        {"socket://h?waiteof=false", "socket://h/?waiteof=false&snmp=false"},
        {"socket://h/?waiteof=false", "socket://h/?waiteof=false&snmp=false"},
        {"socket://h/?snmp=true", "socket://h/?snmp=true"},
        {"http://h/queue", "http://h/queue"}}) {
    EXPECT_EQ(server_.rlx_queue({"add", "new", "--device", given}).status, 0);
    EXPECT_EQ(device("new"), std::string("device for new: ") + kept + "\n");
  }
}

/// A printer application runs the filter itself: the queue's PPD has no filter for its jobs.
TEST_F(CupsQueue, PrinterApplications) {
  const std::string passed_on = "*cupsFilter: \"text/plain 0 -\"\n";
  const std::string filtered_here = "*cupsFilter: \"text/plain 0 texttorlx\"\n";
  for (const auto& [given, kept] :
       {std::pair("ipp://h:8631/ipp/print/p", "rlxipp://h:8631/ipp/print/p"),
        {"ipps://h/ipp/print/p", "rlxipps://h/ipp/print/p"},
        {"rlxipp://h/ipp/print/p", "rlxipp://h/ipp/print/p"}}) {
    EXPECT_EQ(server_.rlx_queue({"add", "app", "--device", given, "--forms", forms()}).status, 0);
    EXPECT_EQ(device("app"), std::string("device for app: ") + kept + "\n");
    EXPECT_EQ(option("app", "form"), "form/Form: *None INVOICE LABEL");
    EXPECT_NE(ppd("app").find(passed_on), std::string::npos);
    // cupsd would refuse every job.
    EXPECT_EQ(ppd("app").find("cupsMandatory"), std::string::npos);
  }
  EXPECT_EQ(server_.rlx_queue({"refresh", "app"}).status, 0);
  EXPECT_NE(ppd("app").find(passed_on), std::string::npos);
  EXPECT_EQ(server_.rlx_queue({"refresh", "app", "--device", printer_.uri()}).status, 0);
  EXPECT_NE(ppd("app").find(filtered_here), std::string::npos);
  EXPECT_EQ(server_.rlx_queue({"refresh", "app", "--device", "ipp://h/ipp/print/p"}).status, 0);
  EXPECT_NE(ppd("app").find(passed_on), std::string::npos);
  for (const std::string setting : {"--mode", "--resolution"}) {
    const Outcome refused =
        server_.rlx_queue({"add", "new", "--device", "ipp://h/ipp/print/p", setting, "2"});
    EXPECT_EQ(refused.status, 2);
    EXPECT_NE(refused.messages.find(setting + " is set where the printer is"), std::string::npos)
        << refused.messages;
  }
  EXPECT_FALSE(has_queue("new"));
}

TEST_F(CupsQueue, ListAndRemove) {
  EXPECT_EQ(server_.run({"lpadmin", "-p", "raw", "-v", "socket://h:9100"}).status, 0);
  EXPECT_EQ(server_.rlx_queue({"list"}).output, "q: " + printer_.uri() + "/?snmp=false\n");
  EXPECT_EQ(server_.rlx_queue({"remove", "q"}).status, 0);
  EXPECT_FALSE(has_queue("q"));
  EXPECT_EQ(server_.rlx_queue({"list"}).output, "");
  EXPECT_EQ(server_.rlx_queue({"remove", "q"}).status, 1);
  const Outcome not_ours = server_.rlx_queue({"refresh", "raw"});
  EXPECT_EQ(not_ours.status, 1);
}

TEST_F(CupsQueue, WrongUse) {
  const std::vector<std::vector<std::string>> uses{
      {},
      {"make"},
      {"add"},
      {"add", "--device", "socket://h"},
      {"add", "new"},
      {"add", "new", "--device"},
      {"add", "new", "--device", "nowhere"},
      {"add", "a b", "--device", "socket://h"},
      {"add", "new", "--device", "socket://h", "--mode", "5"},
      {"add", "new", "--device", "socket://h", "--flags", "x"},
      {"add", "new", "--device", "socket://h", "--resolution", "high"},
      {"add", "new", "--device", "socket://h", "--capabilities", "a b"},
      {"add", "new", "--device", "socket://h", "--default-form", "../x"},
      {"add", "new", "--device", "socket://h", "--forms", "/a:b"},
      {"add", "new", "--device", "socket://h", "--location", "a\"b"},
      {"add", "new", "--device", "socket://h", "--other", "1"},
      {"add", "new", "--device", "socket://h", "more"},
      {"remove", "q", "more"},
      {"list", "more"}};
  for (const auto& use : uses) {
    const Outcome outcome = server_.rlx_queue(use);
    EXPECT_EQ(outcome.status, 2) << outcome.output;
    EXPECT_EQ(outcome.messages.substr(0, 11), "rlx-queue: ") << outcome.messages;
  }
  EXPECT_EQ(
      server_.rlx_queue({"add", "new", "--device", "socket://h", "--forms", "/no/such"}).status, 1);
  EXPECT_FALSE(has_queue("new"));
}

TEST_F(CupsQueue, HelpAndVersion) {
  const Outcome help = server_.rlx_queue({"--help"});
  EXPECT_EQ(help.status, 0);
  for (const char* const option :
       {"--device", "--forms", "--default-form", "--mode", "--resolution", "--capabilities",
        "--flags", "--description", "--location", "refresh", "remove", "list"}) {
    EXPECT_NE(help.output.find(option), std::string::npos) << option;
  }
  EXPECT_EQ(server_.rlx_queue({"--version"}).output, "rlx-queue " RLX_VERSION "\n");
}

}  // namespace
}  // namespace rlx::testing
