#include "platform/linux/FileUri.h"

#include <gtest/gtest.h>

namespace clipwren {

TEST(FileUri, EncodesAllButUnreservedCharactersAndSlashes) {
    EXPECT_EQ(fileUri("/home/ada/Pictures/Clipwren/Recording_2024-03-09_14-05-31.gif"),
              "file:///home/ada/Pictures/Clipwren/Recording_2024-03-09_14-05-31.gif");
    EXPECT_EQ(fileUri("/a b/ü~.gif"), "file:///a%20b/%C3%BC~.gif");
    EXPECT_EQ(fileUri("/100%/#?&=+;,'\"\n"), "file:///100%25/%23%3F%26%3D%2B%3B%2C%27%22%0A");
    EXPECT_EQ(fileUri("/\xff"), "file:///%FF");
}

TEST(FileUri, MakesARelativePathAbsolute) {
    EXPECT_EQ(fileUri("a.gif"), fileUri(std::filesystem::current_path() / "a.gif"));
}

} // namespace clipwren
