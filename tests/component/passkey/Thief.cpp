#include <libsecret/secret.h>
#include <openssl/evp.h>
#include <sqlite3.h>

#include <cstdio>
#include <string>

// What any program of the same user can do to a passkey, with nothing of Kelo's: Thief FILE asks
// the keyring for the wrapping key, takes the newest record of the file, decrypts the private key
// and prints it in hexadecimal. Where it gets none, it says what it lacks.

namespace {

const SecretSchema schema{"app.kelo.Kelo.WrappingKey",
                          SECRET_SCHEMA_NONE,
                          {{"purpose", SECRET_SCHEMA_ATTRIBUTE_STRING}, {nullptr, {}}},
                          0,
                          nullptr,
                          nullptr,
                          nullptr,
                          nullptr,
                          nullptr,
                          nullptr,
                          nullptr};

std::string wrappingKey() {
    gchar* digits =
        secret_password_lookup_sync(&schema, nullptr, nullptr, "purpose", "passkeys", nullptr);
    std::string key;
    for (int at = 0; digits && digits[at] != '\0'; at += 2)
        key += static_cast<char>(std::stoi(std::string(digits + at, 2), nullptr, 16));
    return key;
}

std::string newestRecord(const char* file) {
    sqlite3* database = nullptr;
    sqlite3_stmt* query = nullptr;
    std::string record;
    sqlite3_open_v2(file, &database, SQLITE_OPEN_READONLY, nullptr);
    sqlite3_prepare_v2(database, "SELECT wrapped_private_key FROM passkey ORDER BY number DESC", -1,
                       &query, nullptr);
    if (sqlite3_step(query) == SQLITE_ROW)
        record.assign(static_cast<const char*>(sqlite3_column_blob(query, 0)),
                      static_cast<std::size_t>(sqlite3_column_bytes(query, 0)));
    sqlite3_finalize(query);
    sqlite3_close(database);
    return record;
}

/// AES-256-GCM: 73 bytes that are authenticated, a nonce of 12, a scalar of 32, a tag of 16.
std::string decrypted(const std::string& key, std::string record) {
    auto* bytes = reinterpret_cast<unsigned char*>(record.data());
    std::string scalar(32, '\0');
    auto* out = reinterpret_cast<unsigned char*>(scalar.data());
    int length = 0;
    EVP_CIPHER_CTX* cipher = EVP_CIPHER_CTX_new();
    const bool isOpen = record.size() >= 133 &&
                        EVP_DecryptInit_ex2(cipher, EVP_aes_256_gcm(),
                                            reinterpret_cast<const unsigned char*>(key.data()),
                                            bytes + 73, nullptr) == 1 &&
                        EVP_DecryptUpdate(cipher, nullptr, &length, bytes, 73) == 1 &&
                        EVP_DecryptUpdate(cipher, out, &length, bytes + 85, 32) == 1 &&
                        EVP_CIPHER_CTX_ctrl(cipher, EVP_CTRL_AEAD_SET_TAG, 16, bytes + 117) == 1 &&
                        EVP_DecryptFinal_ex(cipher, out, &length) == 1;
    EVP_CIPHER_CTX_free(cipher);
    return isOpen ? scalar : std::string();
}

} // namespace

int main(int, char** arguments) {
    const std::string key = wrappingKey();
    if (key.size() != 32)
        return std::puts("no wrapping key") < 0;
    const std::string scalar = decrypted(key, newestRecord(arguments[1]));
    if (scalar.empty())
        return std::puts("no private key") < 0;
    for (const char byte : scalar)
        std::printf("%02x", static_cast<unsigned char>(byte));
    return std::puts("") < 0;
}
