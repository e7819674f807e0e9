#include "IncludeRules.h"

#include <gtest/gtest.h>

#include <fstream>

namespace fs = std::filesystem;
using namespace tavix::layers;

namespace {

const fs::path kSource = TAVIX_SOURCE_DIR;

std::string joined(const std::vector<std::string>& lines)
{
    std::string all;
    for (const auto& line : lines)
        all += line + "\n";
    return all;
}

// A small tree of its own, with the same rooms file as src/.
class PlantedTree : public ::testing::Test {
protected:
    void SetUp() override
    {
        root_ = fs::temp_directory_path() / ("tavix_layers_" + std::to_string(::getpid()) + "_" +
                                             ::testing::UnitTest::GetInstance()->current_test_info()->name());
        fs::remove_all(root_);
        fs::create_directories(root_);
        fs::copy_file(kSource / "rooms.txt", root_ / "rooms.txt");
        write("common/Clock.h", "#pragma once\n#include <chrono>\n");
        write("camera/CameraDriver.h", "#pragma once\n#include \"common/Clock.h\"\n");
        write("camera/sim/SimCamera.h",
              "#pragma once\n#include \"camera/CameraDriver.h\"\n#include \"SimScene.h\"\n");
        write("camera/sim/SimScene.h", "#pragma once\n");
        write("camera/graph/GraphDriver.h", "#pragma once\n#include \"camera/CameraDriver.h\"\n");
    }
    void TearDown() override { fs::remove_all(root_); }

    void write(const std::string& file, const std::string& text)
    {
        fs::create_directories((root_ / file).parent_path());
        std::ofstream(root_ / file) << text;
    }

    std::vector<std::string> violations()
    {
        std::string error;
        const RoomOrder order = RoomOrder::read(root_ / "rooms.txt", &error);
        EXPECT_EQ(error, "");
        return findViolations(root_, order);
    }

    fs::path root_;
};

}  // namespace

TEST(Layers, EveryIncludeOfTheProgramKeepsTheRoomOrder)
{
    std::string error;
    const RoomOrder order = RoomOrder::read(kSource / "rooms.txt", &error);
    ASSERT_EQ(error, "");
    const auto violations = findViolations(kSource, order);
    EXPECT_TRUE(violations.empty()) << joined(violations);
}

TEST(Layers, RoomsFileListsTheGroundFirstAndTheDriversAsPeers)
{
    std::string error;
    const RoomOrder order = RoomOrder::read(kSource / "rooms.txt", &error);
    ASSERT_EQ(error, "");
    EXPECT_EQ(order.level("common"), 0);
    EXPECT_LT(order.level("media"), order.level("camera"));
    EXPECT_LT(order.level("camera"), order.level("camera/sim"));
    EXPECT_EQ(order.level("camera/sim"), order.level("camera/icube"));
    EXPECT_EQ(order.level("camera/sim"), order.level("camera/genicam"));
    EXPECT_EQ(order.level("camera/sim"), order.level("camera/graph"));
    EXPECT_GT(order.level("common/ui"), order.level("program"));
    EXPECT_GT(order.level("app"), order.level("files/ui"));
    EXPECT_FALSE(order.knows("nowhere"));
}

TEST_F(PlantedTree, CleanTreeHasNoViolation)
{
    EXPECT_TRUE(violations().empty()) << joined(violations());
}

TEST_F(PlantedTree, IncludeFromARoomAboveNamesFileAndLine)
{
    write("common/Settings.h", "#pragma once\n\n#include \"camera/CameraDriver.h\"\n");
    EXPECT_EQ(violations(),
              std::vector<std::string>{
                  "common/Settings.h:3: includes \"camera/CameraDriver.h\": 'camera' stands above 'common'"});
}

TEST_F(PlantedTree, IncludeBetweenTwoDriversIsRefused)
{
    write("camera/graph/GraphDriver.cpp",
          "#include \"camera/graph/GraphDriver.h\"\n#include \"camera/sim/SimScene.h\"\n");
    EXPECT_EQ(violations(),
              std::vector<std::string>{"camera/graph/GraphDriver.cpp:2: includes "
                                       "\"camera/sim/SimScene.h\": 'camera/graph' and 'camera/sim' "
                                       "are peers"});
}

TEST_F(PlantedTree, SharedCameraRoomMayNotReachIntoADriver)
{
    write("camera/LiveView.cpp", "#include \"camera/sim/SimCamera.h\"\n");
    EXPECT_EQ(violations(),
              std::vector<std::string>{
                  "camera/LiveView.cpp:1: includes \"camera/sim/SimCamera.h\": 'camera/sim' stands above "
                  "'camera'"});
}

TEST_F(PlantedTree, FolderOutsideTheRoomsIsNamed)
{
    write("extra/Thing.h", "#pragma once\n");
    write("common/Uses.h", "#pragma once\n#include \"extra/Thing.h\"\n");
    EXPECT_EQ(violations(), (std::vector<std::string>{
                                "common/Uses.h:2: includes \"extra/Thing.h\", of 'extra', which is no room",
                                "extra/Thing.h: its folder 'extra' is no room of the rooms file"}));
}

TEST_F(PlantedTree, RoomListedTwiceIsAnError)
{
    write("rooms.txt", "common\nmedia common\n");
    std::string error;
    RoomOrder::read(root_ / "rooms.txt", &error);
    EXPECT_NE(error.find("room common listed twice"), std::string::npos) << error;
}
