#include "Linux/Store/LmdbEnvironment.h"

#include "Support/Error.h"

#include <sys/stat.h>

#include <cstring>
#include <string>
#include <utility>

namespace tavel {

namespace {

/// Only address space: enough for the change counts of several hundred thousand pasteboards.
constexpr std::size_t mapBytes = std::size_t{64} << 20;

/// A process takes one slot, and one more while it reads.
constexpr unsigned readerSlots = 1000;

void check(int status) {
    if (status != MDB_SUCCESS)
        throw Error("LMDB", status,
                    std::string("The pasteboard store cannot be opened: ") + mdb_strerror(status));
}

/// LMDB only reads through this pointer, although it is not const.
MDB_val valueOf(const BoardKey& key) {
    return {key.digits().size(), const_cast<char*>(key.digits().data())};
}

std::int64_t changeCountIn(MDB_txn* transaction, MDB_dbi database, const BoardKey& board) {
    MDB_val key = valueOf(board);
    MDB_val value{};
    std::int64_t count = 0;
    if (mdb_get(transaction, database, &key, &value) == MDB_SUCCESS && value.mv_size == sizeof count)
        std::memcpy(&count, value.mv_data, sizeof count);
    return count;
}

} // namespace

LmdbEnvironment::LmdbEnvironment(const std::filesystem::path& file) {
    check(mdb_env_create(&environment_));
    try {
        open(file);
    } catch (...) {
        mdb_env_close(environment_);
        throw;
    }
}

LmdbEnvironment::~LmdbEnvironment() {
    mdb_env_close(environment_);
}

void LmdbEnvironment::open(const std::filesystem::path& file) {
    check(mdb_env_set_mapsize(environment_, mapBytes));
    check(mdb_env_set_maxreaders(environment_, readerSlots));
    // MDB_NOTLS: a thread may read while it holds an idle snapshot. MDB_NOSYNC: no process uses this file
    // after a failure of the system.
    check(mdb_env_open(environment_, file.c_str(), MDB_NOSUBDIR | MDB_NOTLS | MDB_NOSYNC, 0600));
    int freedSlots = 0;
    check(mdb_reader_check(environment_, &freedSlots));

    MDB_txn* transaction = nullptr;
    check(mdb_txn_begin(environment_, nullptr, MDB_RDONLY, &transaction));
    const int status = mdb_dbi_open(transaction, nullptr, 0, &database_);
    mdb_txn_abort(transaction); // the main database's handle is valid from the start, and stays so
    check(status);
}

const char* LmdbEnvironment::path() const {
    const char* path = nullptr;
    mdb_env_get_path(environment_, &path);
    return path;
}

void LmdbEnvironment::touch() const {
    mdb_filehandle_t file = -1;
    mdb_env_get_fd(environment_, &file);
    futimens(file, nullptr); // takes no space, which a write to the file might
}

LmdbSnapshot::~LmdbSnapshot() {
    if (transaction_ != nullptr)
        mdb_txn_abort(transaction_);
}

std::unique_ptr<LmdbSnapshot> LmdbSnapshot::take(const LmdbEnvironment& environment) {
    // Allocated first: a transaction without an owner would keep its slot for as long as the process lives.
    std::unique_ptr<LmdbSnapshot> snapshot(new LmdbSnapshot(environment));
    MDB_txn*& transaction = snapshot->transaction_;
    int status = mdb_txn_begin(environment.handle(), nullptr, MDB_RDONLY, &transaction);
    if (status == MDB_READERS_FULL) {
        // Processes that were killed leave their slots taken.
        int freedSlots = 0;
        mdb_reader_check(environment.handle(), &freedSlots);
        status = mdb_txn_begin(environment.handle(), nullptr, MDB_RDONLY, &transaction);
    }
    return status == MDB_SUCCESS ? std::move(snapshot) : nullptr;
}

std::int64_t LmdbSnapshot::changeCount(const BoardKey& board) const {
    return changeCountIn(transaction_, environment_.database(), board);
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

std::int64_t LmdbWrite::changeCount(const BoardKey& board) const {
    return changeCountIn(transaction_, environment_.database(), board);
}

bool LmdbWrite::setChangeCount(const BoardKey& board, std::int64_t count) {
    MDB_val key = valueOf(board);
    MDB_val value{sizeof count, &count};
    return mdb_put(transaction_, environment_.database(), &key, &value, 0) == MDB_SUCCESS;
}

bool LmdbWrite::commit() {
    if (mdb_txn_commit(std::exchange(transaction_, nullptr)) != MDB_SUCCESS)
        return false;
    environment_.touch();
    return true;
}

} // namespace tavel
