// How audio-CD paths are read: "cdda:DEVICE/TRACK".

#include "tarvanepane.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace {

// What a path names: the drive and the track.
using Named = std::pair<std::string, int>;

Named Read(const std::string& Path) {
    return {TarvaneCddaDeviceFromPath(Path), TarvaneCddaTrackFromPath(Path)};
}

TEST(CddaPath, IsRecognizedByItsScheme) {
    EXPECT_TRUE(TarvaneIsCddaPath("cdda:/dev/sr0/Track 03.wav"));
    EXPECT_TRUE(TarvaneIsCddaPath("cdda:/dev/sr0/3"));
    EXPECT_TRUE(TarvaneIsCddaPath("cdda:/dev/sr0"));
}

TEST(CddaPath, IsRecognizedWhenItIsMalformed) {
    EXPECT_TRUE(TarvaneIsCddaPath("cdda:"));
    EXPECT_TRUE(TarvaneIsCddaPath("cdda:sr0/3"));
    EXPECT_TRUE(TarvaneIsCddaPath("cdda:/dev/sr0/Track x.wav"));
}

TEST(CddaPath, IsNoOtherPath) {
    EXPECT_FALSE(TarvaneIsCddaPath(""));
    EXPECT_FALSE(TarvaneIsCddaPath("/dev/sr0"));
    EXPECT_FALSE(TarvaneIsCddaPath("cdda"));
    EXPECT_FALSE(TarvaneIsCddaPath("./cdda:/dev/sr0/3"));
    EXPECT_FALSE(TarvaneIsCddaPath("/cdda:/dev/sr0/3"));
    EXPECT_FALSE(TarvaneIsCddaPath(" cdda:/dev/sr0/3"));
    EXPECT_FALSE(TarvaneIsCddaPath("CDDA:/dev/sr0/3"));
}

TEST(CddaPath, NamesATrackByItsFileName) {
    EXPECT_EQ(Read("cdda:/dev/sr0/Track 01.wav"), Named("/dev/sr0", 1));
    EXPECT_EQ(Read("cdda:/dev/sr0/Track 03.wav"), Named("/dev/sr0", 3));
    EXPECT_EQ(Read("cdda:/dev/sr0/Track 99.wav"), Named("/dev/sr0", 99));
}

TEST(CddaPath, NamesATrackByItsNumber) {
    EXPECT_EQ(Read("cdda:/dev/sr0/3"), Named("/dev/sr0", 3));
    EXPECT_EQ(Read("cdda:/dev/sr0/03"), Named("/dev/sr0", 3));
    EXPECT_EQ(Read("cdda:/dev/sr0/12"), Named("/dev/sr0", 12));
}

TEST(CddaPath, NamesATrackThatNoDiscHas) {
    EXPECT_EQ(Read("cdda:/dev/sr0/300"), Named("/dev/sr0", 300));
    EXPECT_EQ(Read("cdda:/dev/sr0/2147483647"), Named("/dev/sr0", std::numeric_limits<int>::max()));
}

TEST(CddaPath, NamesNoTrackByANumberThatIsTooLarge) {
    EXPECT_EQ(TarvaneCddaTrackFromPath("cdda:/dev/sr0/2147483648"), 0);
    EXPECT_EQ(TarvaneCddaTrackFromPath("cdda:/dev/sr0/4294967297"), 0);
    EXPECT_EQ(TarvaneCddaTrackFromPath("cdda:/dev/sr0/18446744073709551617"), 0);
    EXPECT_EQ(TarvaneCddaTrackFromPath("cdda:/dev/sr0/" + std::string(10000, '9')), 0);
}

TEST(CddaPath, NamesNoTrackByZeroOrANegativeNumber) {
    EXPECT_EQ(TarvaneCddaTrackFromPath("cdda:/dev/sr0/0"), 0);
    EXPECT_EQ(TarvaneCddaTrackFromPath("cdda:/dev/sr0/00"), 0);
    EXPECT_EQ(TarvaneCddaTrackFromPath("cdda:/dev/sr0/-3"), 0);
    EXPECT_EQ(TarvaneCddaTrackFromPath("cdda:/dev/sr0/Track 00.wav"), 0);
    EXPECT_EQ(TarvaneCddaTrackFromPath("cdda:/dev/sr0/Track -3.wav"), 0);
}

TEST(CddaPath, NamesNoTrackByMoreOrLessThanItsName) {
    for (const char* name : {"Track 3.wav",
                             "Track 003.wav",
                             "Track 03",
                             "Track 03.WAV",
                             "track 03.wav",
                             "Track03.wav",
                             "Track  3.wav",
                             "Track 03.wav ",
                             " Track 03.wav",
                             "Track .wav",
                             "Track x3.wav",
                             "03.wav",
                             "+3",
                             " 3",
                             "3 ",
                             "3x",
                             "0x3",
                             "3.0",
                             "1e1",
                             "\xd9\xa3"}) {
        EXPECT_EQ(TarvaneCddaTrackFromPath(std::string("cdda:/dev/sr0/") + name), 0) << name;
    }
}

TEST(CddaPath, OfADriveAloneNamesTheDriveAndNoTrack) {
    EXPECT_EQ(Read("cdda:/dev/sr0"), Named("/dev/sr0", 0));
    EXPECT_EQ(Read("cdda:/dev/sr0/"), Named("/dev/sr0", 0));
    EXPECT_EQ(Read("cdda:/sr0"), Named("/sr0", 0));
}

TEST(CddaPath, WithAMistypedTrackDoesNotNameTheWholeDisc) {
    EXPECT_EQ(Read("cdda:/dev/sr0/Track 3.wav"), Named("/dev/sr0/Track 3.wav", 0));
    EXPECT_EQ(Read("cdda:/dev/sr0/0"), Named("/dev/sr0/0", 0));
    EXPECT_EQ(Read("cdda:/dev/sr0/3/"), Named("/dev/sr0/3", 0));
}

TEST(CddaPath, WithoutAnAbsoluteDriveNamesNothing) {
    for (const char* path : {"cdda:", "cdda:sr0", "cdda:sr0/3", "cdda:dev/sr0/Track 03.wav",
                             "cdda:./sr0/3", "cdda:3", "cdda:Track 03.wav", "cdda: /dev/sr0/3"}) {
        EXPECT_EQ(Read(path), Named("", 0)) << path;
    }
}

TEST(CddaPath, WithTheRootAsDriveNamesNoTrack) {
    EXPECT_EQ(Read("cdda:/"), Named("", 0));
    EXPECT_EQ(Read("cdda:///"), Named("", 0));
    EXPECT_EQ(TarvaneCddaTrackFromPath("cdda:/3"), 0);
    EXPECT_EQ(TarvaneCddaTrackFromPath("cdda://3"), 0);
}

TEST(CddaPath, MayNameTheDriveByAnyAbsolutePath) {
    EXPECT_EQ(Read("cdda:/dev/cdrom/3"), Named("/dev/cdrom", 3));
    EXPECT_EQ(Read("cdda:/dev/disk/by-id/a drive/Track 03.wav"),
              Named("/dev/disk/by-id/a drive", 3));
    EXPECT_EQ(Read("cdda:/dev/sr0//3"), Named("/dev/sr0", 3));
    EXPECT_EQ(Read("cdda:/dev/7/3"), Named("/dev/7", 3));
    EXPECT_EQ(Read("cdda:/d\xff\n/3"), Named("/d\xff\n", 3));
}

TEST(CddaPath, OfAnotherSchemeNamesNothing) {
    EXPECT_EQ(Read("/dev/sr0/3"), Named("", 0));
    EXPECT_EQ(Read(""), Named("", 0));
    EXPECT_EQ(Read("file:/dev/sr0/3"), Named("", 0));
}

} // namespace
