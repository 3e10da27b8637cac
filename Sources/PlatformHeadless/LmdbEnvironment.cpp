#include "PlatformHeadless/LmdbEnvironment.h"

#include "Support/Error.h"

#include <string>
#include <utility>

namespace tavel {

namespace {

/// Only address space: the file is as long as what was once stored at the same time.
constexpr std::size_t mapBytes = std::size_t{16} << 30;

/// Every process that reads takes a slot or a few, and each large payload in use one more.
constexpr unsigned readerSlots = 1000;

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
    // MDB_NOTLS: a payload that shares a snapshot may be let go on another thread than the one that took it.
    // The number is the layout's (StoredContent.h): a program with another layout uses a file of its own.
    const std::filesystem::path file = directory / "pasteboards-1.mdb";
    check(mdb_env_open(environment_, file.c_str(), MDB_NOSUBDIR | MDB_NOTLS, 0600));
    int freedSlots = 0;
    check(mdb_reader_check(environment_, &freedSlots));

    MDB_txn* transaction = nullptr;
    check(mdb_txn_begin(environment_, nullptr, MDB_RDONLY, &transaction));
    const int status = mdb_dbi_open(transaction, nullptr, 0, &database_);
    mdb_txn_abort(transaction); // the main database's handle is valid from the start, and stays so
    check(status);
}

LmdbSnapshot::LmdbSnapshot(std::shared_ptr<const LmdbEnvironment> environment, MDB_txn* transaction)
    : environment_(std::move(environment)), transaction_(transaction) {}

LmdbSnapshot::~LmdbSnapshot() {
    mdb_txn_abort(transaction_);
}

std::shared_ptr<LmdbSnapshot> LmdbSnapshot::take(std::shared_ptr<const LmdbEnvironment> environment) {
    MDB_txn* transaction = nullptr;
    int status = mdb_txn_begin(environment->handle(), nullptr, MDB_RDONLY, &transaction);
    if (status == MDB_READERS_FULL) {
        // Processes that were killed leave their slots taken.
        int freedSlots = 0;
        mdb_reader_check(environment->handle(), &freedSlots);
        status = mdb_txn_begin(environment->handle(), nullptr, MDB_RDONLY, &transaction);
    }
    if (status != MDB_SUCCESS)
        return nullptr;
    return std::shared_ptr<LmdbSnapshot>(new LmdbSnapshot(std::move(environment), transaction));
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
    MDB_txn* transaction = nullptr;
    if (mdb_txn_begin(environment.handle(), nullptr, 0, &transaction) != MDB_SUCCESS)
        return nullptr;
    return std::unique_ptr<LmdbWrite>(new LmdbWrite(transaction));
}

LmdbWrite::~LmdbWrite() {
    if (transaction_ != nullptr)
        mdb_txn_abort(transaction_);
}

bool LmdbWrite::commit() {
    return mdb_txn_commit(std::exchange(transaction_, nullptr)) == MDB_SUCCESS;
}

} // namespace tavel
