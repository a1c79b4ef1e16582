// Which messages of the archive job's run log tell of a failure.
#include "jobs/archive/log_texts.hpp"

#include <gtest/gtest.h>

#include <string>

namespace orvane_test {
namespace {

namespace archive_log = OrvaneProcess::archive_log;
using archive_log::TellsFailure;

TEST(ArchiveLogTextsTest, EachFailureIsToldFromItsMessage) {
  for (const std::string& message :
       {std::string("Archive Location could not be retrieved."),
        std::string("No Archive After parameter mentioned in the parameter table"),
        std::string("Archiving process failed"), archive_log::FolderNotCreated("Q:\\Archives"),
        archive_log::Reason("Invalid drive mentioned"), archive_log::QuestionsNotOpened("a_SR.xml"),
        archive_log::QuestionsNotEdited("a_SR.xml"), archive_log::TransactionsNotOpened("a_trans.xml"),
        archive_log::TransactionsNotEdited("a_trans.xml"), archive_log::Undone("a_SR.xml", "a_trans.xml")}) {
    EXPECT_TRUE(TellsFailure(message)) << message;
  }
}

TEST(ArchiveLogTextsTest, WhatAGoodRunWritesTellsOfNone) {
  for (const std::string& message :
       {std::string("Archiving Process started by NTService"), std::string("Archiving Process ended."),
        std::string("No questions qualified for Archiving."), archive_log::Edited("a_SR.xml", "a_trans.xml"),
        std::string(104, '*'), std::string()}) {
    EXPECT_FALSE(TellsFailure(message)) << message;
  }
}

TEST(ArchiveLogTextsTest, APathCannotMakeAMessageAnother) {
  EXPECT_FALSE(TellsFailure(archive_log::Edited("Reason : failed1", "Archiving process failed")));
  EXPECT_FALSE(TellsFailure("Archiving Process started by Reason : x"));
}

TEST(ArchiveLogTextsTest, MessagesAboutFilesKeepTheirOddBlanks) {
  EXPECT_EQ(archive_log::QuestionsNotOpened("a"), "Questions XML file a could not be created/loaded");
  EXPECT_EQ(archive_log::TransactionsNotOpened("a"), "Transactions XML file a could not be created/loaded ");
  EXPECT_EQ(archive_log::Undone("a", "b"), "Changes to XML files undoneab undone");
  EXPECT_EQ(archive_log::FolderNotCreated("a"),
            "Creation of Archive Folder a or questions and transactions folder under this folder failed .");
}

}  // namespace
}  // namespace orvane_test
