#include "fs/tree_walk.h"

#include <fcntl.h>

#include <cerrno>
#include <cstdio>

#include "tests/support/test_support.h"

namespace {

// Moves directory b out of the tree as the walk enters it. Leaving any directory
// afterwards would be wrong: a removal would remove it.
struct MovedAway : fsdetail::TreeVisitor {
    ScratchDirectory scratch;
    int VisitEntry(int, const char*, const struct stat&) override { return 0; }
    int EnterDirectory(const char* name, const struct stat&) override {
        if (std::string(name) != "b") return 0;
        return std::rename((scratch / "tree/a/b").c_str(), (scratch / "b").c_str());
    }
    int LeaveDirectory(int, const char* name, const struct stat&) override {
        ADD_FAILURE() << "left " << name;
        return 0;
    }
};

}  // namespace

// Below a directory moved elsewhere, ".." leads out of the tree: the walk must end
// there rather than go on among the new parent's entries.
TEST(TreeWalk, EndsWhenADirectoryIsMovedOutFromUnderIt) {
    MovedAway visitor;
    WriteText(visitor.scratch / "tree/a/b/file", "");
    EXPECT_EQ(ESTALE, fsdetail::WalkTree(AT_FDCWD, (visitor.scratch / "tree").c_str(), visitor,
                                         fsdetail::OnFailure::kContinue));
}
