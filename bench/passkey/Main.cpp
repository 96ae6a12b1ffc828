// bench-passkey: how long a passkey takes to be made and to sign, in software and in a chip that is
// a program, beside the bare arithmetic; and how long the window's thread is kept from its window
// meanwhile. Says so where the computer has a token that another library could be timed with.

#include "common/BenchmarkMain.h"
#include "common/Distribution.h"
#include "component/tpm/SimulatedChip.h"
#include "passkey/Ceremonies.h"
#include "testing/TemporaryFolder.h"

#include "authenticator/keys/P256Key.h"

#include <fido.h>

#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <vector>

namespace kelo::bench {

namespace {

Distribution timesOf(int rounds, const std::function<Milliseconds()>& work) {
    std::vector<double> times;
    work(); // what is done once in the life of a program
    for (int round = 0; round < rounds; ++round)
        times.push_back(work().count());
    return distributionOf(std::move(times));
}

Milliseconds makeAndUseBareKey() {
    const auto begin = std::chrono::steady_clock::now();
    authenticator::P256Key::generate().sign(Bytes(32, 0x5A));
    return std::chrono::steady_clock::now() - begin;
}

class Table {
public:
    explicit Table(const Distribution& floor) : floor(floor.median) {
        std::printf("%-46s %8s %8s %8s %8s   of the bare key's median\n", "milliseconds", "min",
                    "median", "p95", "max");
        print("a bare key of OpenSSL's, made and used", floor);
    }
    void print(const std::string& name, const Distribution& times) const {
        std::printf("%-46s %8.2f %8.2f %8.2f %8.2f   %8.1f\n", name.c_str(), times.lowest,
                    times.median, times.percentile95, times.highest, times.median / floor);
    }

private:
    double floor;
};

void measure(const Table& table, const std::string& place, Ceremonies& passkeys, int rounds) {
    table.print(place + ": key made", timesOf(rounds, [&] { return passkeys.makeKey(); }));
    table.print(place + ": signature", timesOf(rounds, [&] { return passkeys.sign(); }));
    table.print(place + ": registration, from Continue",
                timesOf(rounds, [&] { return passkeys.registration(); }));
    table.print(place + ": sign-in, from Continue",
                timesOf(rounds, [&] { return passkeys.signIn(); }));
    std::printf("%-46s %35.2f\n", (place + ": main thread's longest pause").c_str(),
                passkeys.longestPause().count());
}

std::size_t tokensOfThisComputer() {
    fido_init(0);
    constexpr std::size_t room = 8;
    fido_dev_info_t* list = fido_dev_info_new(room);
    std::size_t found = 0;
    fido_dev_info_manifest(list, room, &found);
    fido_dev_info_free(&list, room);
    return found;
}

void run(int rounds) {
    const char* password = std::getenv("KELO_PRIVATE_DESKTOP_PASSWORD");
    if (!password)
        throw std::runtime_error("Start it by scripts/bench passkey.");
    const test::TemporaryFolder folder;
    const tests::SimulatedChip chip;
    const Table table(timesOf(rounds, makeAndUseBareKey));
    {
        Ceremonies passkeys("device:/nowhere", password, folder / "software.sqlite");
        table.print("user verified by PAM, password typed at once",
                    timesOf(rounds, [&] { return passkeys.verifyUser(); }));
        measure(table, "software", passkeys, rounds);
    }
    Ceremonies passkeys(chip.transport(), password, folder / "chip.sqlite");
    measure(table, "chip (swtpm)", passkeys, rounds);
    const std::size_t tokens = tokensOfThisComputer();
    std::printf("\nlibfido2 finds %zu tokens here%s\n", tokens,
                tokens == 0 ? ", so there is none to be timed beside these."
                            : ". They ask for a touch, so they are not timed.");
}

} // namespace

} // namespace kelo::bench

int main(int count, char** arguments) {
    return kelo::bench::benchmarkMain(
        count, arguments, "bench-passkey", "REPETITIONS",
        [](const kelo::bench::Order& order) { kelo::bench::run(order.times); });
}
