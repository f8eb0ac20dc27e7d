#pragma once

#include <macplatform/StartupVolume.h>
#include <support/TemporaryFolder.h>

#include <gtest/gtest.h>

/// A test fixture with a temporary startup volume.
class VolumeTest : public testing::Test {
protected:
    VolumeTest() { EXPECT_TRUE(macplatform::SetStartupVolume(volume.Path().string())); }
    ~VolumeTest() override { macplatform::SetStartupVolume(""); }

    const TemporaryFolder volume;
};
