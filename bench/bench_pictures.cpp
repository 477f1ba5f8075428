// The common pictures' costs that grow with a file: the JPEG frame scan, which
// walks a file byte by byte, and the BMP writer, set against a plain write of
// the same bytes.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <vector>

#include "fixtures/ByteWriter.h"
#include "identify/IFileHost.h"
#include "pictures/BmpWriter.h"
#include "pictures/CImageFiles.h"
#include "pictures/SavePicture.h"
#include "platform/Picture.h"

namespace {

constexpr int32_t kSide = 4096;
constexpr size_t kJpegSize = size_t{16} << 20;

const fixtures::TempDir& Dir() {
    static fixtures::TempDir dir;
    return dir;
}

// Two files of 16 MiB that start as a JPEG and hold the frame marker at their
// end, so that the scan walks them whole.
const std::string* JpegPaths() {
    static const std::string paths[2] = {Dir() / "a.jpg", Dir() / "b.jpg"};
    static bool written = false;
    if (!written) {
        std::string bytes(kJpegSize, '\x5A');
        bytes[0] = '\xFF';
        bytes[1] = '\xD8';
        const std::string frame("\xFF\xC0\x00\x11\x08\x10\x00\x10\x00\x03", 10);
        bytes.replace(bytes.size() - frame.size(), frame.size(), frame);
        for (const auto& p : paths) fixtures::WriteFile(p, bytes);
        written = true;
    }
    return paths;
}

void JpegScan16MiB(benchmark::State& state) {
    const std::string* paths = JpegPaths();
    FileHost host;
    CImageFiles images(host);
    int i = 0;
    for (auto _ : state) {
        // The same path again costs nothing, so the two alternate.
        benchmark::DoNotOptimize(images.Initialize(paths[i++ & 1]));
        if (images.Width() != 4096) state.SkipWithError("the frame was not found");
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(kJpegSize));
}
BENCHMARK(JpegScan16MiB)->Unit(benchmark::kMillisecond);

Picture BigPicture() {
    std::vector<uint32_t> pixels(static_cast<size_t>(kSide) * kSide);
    for (size_t i = 0; i < pixels.size(); ++i) pixels[i] = static_cast<uint32_t>(i * 2654435761u) & 0xFFFFFF;
    return PictureFromPixels(kSide, kSide, pixels);
}

void SaveBmp4096(benchmark::State& state) {
    const Picture picture = BigPicture();
    const std::string path = Dir() / "big.bmp";
    for (auto _ : state) SavePicture(picture, path);
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * (kBmpHeaderSize + Bmp24Stride(kSide) * kSide));
}
BENCHMARK(SaveBmp4096)->Unit(benchmark::kMillisecond);

// The least any writer must do: the finished bytes into a new file in one
// write, then renamed into place.
void PlainWriteOfTheSameBytes(benchmark::State& state) {
    const std::string bytes(static_cast<size_t>(kBmpHeaderSize + Bmp24Stride(kSide) * kSide), '\x33');
    const std::string path = Dir() / "plain.bmp";
    const std::string temporary = path + ".tmp";
    for (auto _ : state) {
        const int fd = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        size_t done = 0;
        while (done < bytes.size()) {
            const ssize_t n = ::write(fd, bytes.data() + done, bytes.size() - done);
            if (n <= 0) break;
            done += static_cast<size_t>(n);
        }
        ::close(fd);
        ::rename(temporary.c_str(), path.c_str());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(bytes.size()));
}
BENCHMARK(PlainWriteOfTheSameBytes)->Unit(benchmark::kMillisecond);

}  // namespace
