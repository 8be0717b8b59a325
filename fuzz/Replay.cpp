// Without libFuzzer: runs a fuzzer's check on every file of a corpus, then on so many mutations of them,
// which are the same at every run.
//
//   NAME_replay ROUNDS CORPUS-FOLDER [FILE]    each input is written to the file before it is tried

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

using Input = std::vector<std::uint8_t>;

constexpr std::size_t longestInput = 4096;

std::vector<Input> readCorpus(const char* folder) {
    std::vector<std::filesystem::path> paths;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        paths.push_back(entry.path());
    std::sort(paths.begin(), paths.end());
    std::vector<Input> corpus;
    for (const auto& path : paths) {
        std::ifstream file(path, std::ios::binary);
        corpus.push_back({std::istreambuf_iterator<char>(file), {}});
    }
    return corpus;
}

class Mutator {
public:
    explicit Mutator(std::vector<Input> corpus) : corpus(std::move(corpus)) {}

    Input next() {
        Input input = any();
        for (std::size_t changes = 1 + below(8); changes > 0; --changes)
            change(input);
        if (input.size() > longestInput) input.resize(longestInput);
        return input;
    }

private:
    // 0 to limit - 1, by the generator alone: distributions differ between libraries.
    std::size_t below(std::size_t limit) { return limit == 0 ? 0 : random() % limit; }
    std::uint8_t byte() {
        constexpr std::uint8_t telling[] = {0, 1, 0x7F, 0x80, 0xFF, '\n', '[', ']', '=', '\\', '"', ' '};
        return below(2) == 0 ? telling[below(std::size(telling))] : static_cast<std::uint8_t>(random());
    }
    const Input& any() { return corpus[below(corpus.size())]; }

    void change(Input& input) {
        const auto at = [&](std::size_t index) { return input.begin() + static_cast<std::ptrdiff_t>(index); };
        const std::size_t place = below(input.size() + 1);
        const std::size_t length = std::min(input.size() - place, below(32));
        switch (below(6)) {
        case 0:
            if (place < input.size()) input[place] = byte();
            break;
        case 1:
            if (place < input.size()) input[place] ^= static_cast<std::uint8_t>(1 << below(8));
            break;
        case 2: input.insert(at(place), 1 + below(4), byte()); break;
        case 3: input.erase(at(place), at(place + length)); break;
        case 4: input.resize(place); break;
        default: {
            const Input& other = any();
            const auto from = static_cast<std::ptrdiff_t>(below(other.size() + 1));
            const Input piece(other.begin() + from, other.end());
            input.insert(at(place), piece.begin(), piece.end());
        }
        }
    }

    const std::vector<Input> corpus;
    std::mt19937 random{1};
};

} // namespace

int main(int argc, char** argv) {
    if (argc < 3) return std::fprintf(stderr, "usage: %s ROUNDS CORPUS-FOLDER [FILE]\n", argv[0]), 2;
    auto corpus = readCorpus(argv[2]);
    if (corpus.empty()) return std::fprintf(stderr, "%s holds no input\n", argv[2]), 1;
    const auto tryOut = [&](const Input& input) {
        if (argc > 3)
            std::ofstream(argv[3], std::ios::binary)
                .write(reinterpret_cast<const char*>(input.data()),
                       static_cast<std::streamsize>(input.size()));
        LLVMFuzzerTestOneInput(input.data(), input.size());
    };
    for (const Input& input : corpus)
        tryOut(input);
    const int rounds = std::atoi(argv[1]);
    const std::size_t files = corpus.size();
    Mutator mutator(std::move(corpus));
    for (int round = 0; round < rounds; ++round)
        tryOut(mutator.next());
    std::printf("%zu inputs and %d mutations\n", files, rounds);
}
