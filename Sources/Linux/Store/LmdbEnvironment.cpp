#include "Linux/Store/LmdbEnvironment.h"

#include "Linux/Store/StoreFiles.h"
#include "Support/Error.h"

#include <sys/stat.h>
#include <unistd.h>

#include <string>
#include <utility>

namespace tavel {

namespace {

/// Only address space: the file is as long as the most that was ever stored at once.
constexpr std::size_t mapBytes = std::size_t{16} << 30;

/// A reading process takes one or a few slots, and one more for each large payload in use.
constexpr unsigned readerSlots = 1000;

/// Enough for those slots and LMDB's own record before them; a slot has the size of a processor's cache line,
/// at most 128 bytes.
constexpr std::size_t lockFileBytes = std::size_t{128} * 1024;

void check(int status) {
    if (status != MDB_SUCCESS)
        throw Error("LMDB", status,
                    std::string("The pasteboard store cannot be opened: ") + mdb_strerror(status));
}

} // namespace

LmdbEnvironment::LmdbEnvironment(const std::filesystem::path& directory) {
    check(mdb_env_create(&environment_));
    try {
        open(directory);
    } catch (...) {
        mdb_env_close(environment_);
        throw;
    }
}

LmdbEnvironment::~LmdbEnvironment() {
    mdb_env_close(environment_);
}

void LmdbEnvironment::open(const std::filesystem::path& directory) {
    check(mdb_env_set_mapsize(environment_, mapBytes));
    check(mdb_env_set_maxreaders(environment_, readerSlots));
    // MDB_NOTLS: a payload that shares a snapshot may be released on another thread than the one that took
    // it. The number is the layout's (StoredContent.h): a program with another layout uses another file.
    const std::filesystem::path file = directory / "pasteboards-1.mdb";
    {
        const StoreOpeningLock lock(directory);
        removeUnfinishedStoreFile(file);
        allocateLockFile(file.string() + "-lock", lockFileBytes);
        check(mdb_env_open(environment_, file.c_str(), MDB_NOSUBDIR | MDB_NOTLS, 0600));
    }
    int freedSlots = 0;
    check(mdb_reader_check(environment_, &freedSlots));

    MDB_txn* transaction = nullptr;
    check(mdb_txn_begin(environment_, nullptr, MDB_RDONLY, &transaction));
    const int status = mdb_dbi_open(transaction, nullptr, 0, &database_);
    mdb_txn_abort(transaction); // the main database's handle is valid from the start, and stays so
    check(status);
}

void LmdbEnvironment::releaseUnusedTail() const {
    const auto lock = LmdbWrite::begin(*this); // nobody adds to the file meanwhile
    if (lock == nullptr)
        return;
    MDB_envinfo info{};
    MDB_stat statistics{};
    int descriptor = -1;
    struct stat status {};

    if (mdb_env_info(environment_, &info) != MDB_SUCCESS ||
        mdb_env_stat(environment_, &statistics) != MDB_SUCCESS ||
        mdb_env_get_fd(environment_, &descriptor) != MDB_SUCCESS || fstat(descriptor, &status) != 0)
        return;
    // No snapshot, however old, refers to a page behind this one: the number only grows.
    const auto usedBytes = static_cast<off_t>((info.me_last_pgno + 1) * statistics.ms_psize);
    if (status.st_size > usedBytes)
        static_cast<void>(ftruncate(descriptor, usedBytes)); // on failure the file only takes more space
}

LmdbSnapshot::LmdbSnapshot(std::shared_ptr<const LmdbEnvironment> environment)
    : environment_(std::move(environment)) {}

LmdbSnapshot::~LmdbSnapshot() {
    if (transaction_ != nullptr)
        mdb_txn_abort(transaction_);
}

std::shared_ptr<LmdbSnapshot> LmdbSnapshot::take(std::shared_ptr<const LmdbEnvironment> environment) {
    // Allocated first: a transaction without an owner would keep its slot for as long as the process lives.
    const std::shared_ptr<LmdbSnapshot> snapshot(new LmdbSnapshot(environment));
    MDB_txn*& transaction = snapshot->transaction_;
    int status = mdb_txn_begin(environment->handle(), nullptr, MDB_RDONLY, &transaction);
    if (status == MDB_READERS_FULL) {
        // Processes that were killed leave their slots taken.
        int freedSlots = 0;
        mdb_reader_check(environment->handle(), &freedSlots);
        status = mdb_txn_begin(environment->handle(), nullptr, MDB_RDONLY, &transaction);
    }
    return status == MDB_SUCCESS ? snapshot : nullptr;
}

void LmdbSnapshot::release() {
    mdb_txn_reset(transaction_);
}

bool LmdbSnapshot::renew() {
    return mdb_txn_renew(transaction_) == MDB_SUCCESS;
}

std::unique_ptr<LmdbWrite> LmdbWrite::begin(const LmdbEnvironment& environment) {
    // A killed reader's slot would keep the space of everything written since from being reused.
    int freedSlots = 0;
    mdb_reader_check(environment.handle(), &freedSlots);
    // Allocated first: a transaction without an owner would keep every other writer waiting for ever.
    std::unique_ptr<LmdbWrite> write(new LmdbWrite(environment));
    const int status = mdb_txn_begin(environment.handle(), nullptr, 0, &write->transaction_);
    return status == MDB_SUCCESS ? std::move(write) : nullptr;
}

LmdbWrite::~LmdbWrite() {
    if (transaction_ != nullptr)
        mdb_txn_abort(transaction_);
}

bool LmdbWrite::commit() {
    if (mdb_txn_commit(std::exchange(transaction_, nullptr)) == MDB_SUCCESS)
        return true;
    environment_.releaseUnusedTail();
    return false;
}

} // namespace tavel
