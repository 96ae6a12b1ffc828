#include "linux/tpm/TpmKey.h"

#include "authenticator/keys/Cryptography.h"
#include "linux/tpm/TpmResult.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace kelo::tpm {

namespace {

constexpr std::size_t coordinateSize = 32;

/// What all programs take for the storage primary on this curve, so that the chip makes the same
/// one from its seed each time (TCG TPM v2.0 Provisioning Guidance, 7.5.1).
TPM2B_PUBLIC storagePrimary() {
    TPM2B_PUBLIC wanted{};
    TPMT_PUBLIC& area = wanted.publicArea;
    area.type = TPM2_ALG_ECC;
    area.nameAlg = TPM2_ALG_SHA256;
    area.objectAttributes = TPMA_OBJECT_RESTRICTED | TPMA_OBJECT_DECRYPT | TPMA_OBJECT_FIXEDTPM |
                            TPMA_OBJECT_FIXEDPARENT | TPMA_OBJECT_SENSITIVEDATAORIGIN |
                            TPMA_OBJECT_USERWITHAUTH | TPMA_OBJECT_NODA;
    TPMS_ECC_PARMS& parameters = area.parameters.eccDetail;
    parameters.symmetric.algorithm = TPM2_ALG_AES;
    parameters.symmetric.keyBits.aes = 128;
    parameters.symmetric.mode.aes = TPM2_ALG_CFB;
    parameters.scheme.scheme = TPM2_ALG_NULL;
    parameters.curveID = TPM2_ECC_NIST_P256;
    parameters.kdf.scheme = TPM2_ALG_NULL;
    return wanted;
}

/// Without dictionary-attack protection (noDA): the authorization is 256 bits that nobody can
/// guess, and the wrong attempts of another program must not lock the user out of this key.
TPM2B_PUBLIC signingKey() {
    TPM2B_PUBLIC wanted{};
    TPMT_PUBLIC& area = wanted.publicArea;
    area.type = TPM2_ALG_ECC;
    area.nameAlg = TPM2_ALG_SHA256;
    area.objectAttributes = TPMA_OBJECT_SIGN_ENCRYPT | TPMA_OBJECT_FIXEDTPM |
                            TPMA_OBJECT_FIXEDPARENT | TPMA_OBJECT_SENSITIVEDATAORIGIN |
                            TPMA_OBJECT_USERWITHAUTH | TPMA_OBJECT_NODA;
    TPMS_ECC_PARMS& parameters = area.parameters.eccDetail;
    parameters.symmetric.algorithm = TPM2_ALG_NULL;
    parameters.scheme.scheme = TPM2_ALG_ECDSA;
    parameters.scheme.details.ecdsa.hashAlg = TPM2_ALG_SHA256;
    parameters.curveID = TPM2_ECC_NIST_P256;
    parameters.kdf.scheme = TPM2_ALG_NULL;
    return wanted;
}

TpmHandle makePrimary(const TpmConnection& chip) {
    const TPM2B_SENSITIVE_CREATE noSecret{};
    const TPM2B_PUBLIC wanted = storagePrimary();
    const TPM2B_DATA noData{};
    const TPML_PCR_SELECTION noRegisters{};
    ESYS_TR made = ESYS_TR_NONE;
    require(Esys_CreatePrimary(chip.get(), ESYS_TR_RH_OWNER, ESYS_TR_PASSWORD, ESYS_TR_NONE,
                               ESYS_TR_NONE, &noSecret, &wanted, &noData, &noRegisters, &made,
                               nullptr, nullptr, nullptr, nullptr),
            "making the storage primary");
    return {chip, made};
}

TPM2B_NAME nameOf(const TpmConnection& chip, ESYS_TR object) {
    TPM2B_NAME* name = nullptr;
    require(Esys_TR_GetName(chip.get(), object, &name), "naming the storage primary");
    const TpmMemory<TPM2B_NAME> memory(name);
    return *name;
}

bool isSame(const TPM2B_NAME& one, const TPM2B_NAME& other) {
    return std::equal(one.name, one.name + one.size, other.name, other.name + other.size);
}

/// A session whose key only the holder of the primary knows. Who listens between processor and chip
/// sees neither the authorization nor the first parameter, which are all that is secret here.
TpmHandle startSession(const TpmConnection& chip, const TpmHandle& primary) {
    TPMT_SYM_DEF cipher{};
    cipher.algorithm = TPM2_ALG_AES;
    cipher.keyBits.aes = 128;
    cipher.mode.aes = TPM2_ALG_CFB;
    ESYS_TR session = ESYS_TR_NONE;
    require(Esys_StartAuthSession(chip.get(), primary.get(), ESYS_TR_NONE, ESYS_TR_NONE,
                                  ESYS_TR_NONE, ESYS_TR_NONE, nullptr, TPM2_SE_HMAC, &cipher,
                                  TPM2_ALG_SHA256, &session),
            "starting a session");
    return {chip, session};
}

void encryptParameters(const TpmConnection& chip, const TpmHandle& session,
                       TPMA_SESSION directions) {
    constexpr TPMA_SESSION all = 0xFF;
    require(Esys_TRSess_SetAttributes(chip.get(), session.get(),
                                      directions | TPMA_SESSION_CONTINUESESSION, all),
            "encrypting the session");
}

/// Wipes its copy of the authorization.
class Authorization {
public:
    explicit Authorization(const authenticator::SecretBytes& secret) {
        value.size = static_cast<UINT16>(std::min(secret.size(), sizeof value.buffer));
        std::copy_n(secret.view().begin(), value.size, value.buffer);
    }
    ~Authorization() { wipe(&value, sizeof value); }
    Authorization(const Authorization&) = delete;
    Authorization& operator=(const Authorization&) = delete;

    TPM2B_AUTH value{};
};

TpmHandle load(const TpmConnection& chip, const TpmHandle& primary, const TpmHandle& session,
               const TpmKey& key) {
    encryptParameters(chip, session, TPMA_SESSION_DECRYPT);
    ESYS_TR loaded = ESYS_TR_NONE;
    require(Esys_Load(chip.get(), primary.get(), session.get(), ESYS_TR_NONE, ESYS_TR_NONE,
                      &key.privatePart, &key.publicPart, &loaded),
            "loading the key");
    return {chip, loaded};
}

void copyCoordinate(const TPM2B_ECC_PARAMETER& from, std::array<std::uint8_t, coordinateSize>& to) {
    const std::size_t size = std::min<std::size_t>(from.size, to.size());
    std::copy_n(from.buffer, size, to.end() - static_cast<std::ptrdiff_t>(size));
}

} // namespace

webauthn::PublicKey TpmKey::publicKey() const {
    const TPMS_ECC_POINT& point = publicPart.publicArea.unique.ecc;
    webauthn::PublicKey key{};
    copyCoordinate(point.x, key.x);
    copyCoordinate(point.y, key.y);
    return key;
}

void requireSuitableChip(const TpmConnection& chip) {
    TPMS_CAPABILITY_DATA* told = nullptr;
    require(Esys_GetCapability(chip.get(), ESYS_TR_NONE, ESYS_TR_NONE, ESYS_TR_NONE,
                               TPM2_CAP_ECC_CURVES, TPM2_ECC_NIST_P256, 1, nullptr, &told),
            "asking for curves");
    const TpmMemory<TPMS_CAPABILITY_DATA> memory(told);
    const TPML_ECC_CURVE& curves = told->data.eccCurves;
    if (curves.count == 0 || curves.eccCurves[0] != TPM2_ECC_NIST_P256)
        throw tpmFailure(TpmTrouble::broken, "the chip lacks the curve P-256");
}

TpmKey makeKey(const TpmConnection& chip, const authenticator::SecretBytes& authorization) {
    const TpmHandle primary = makePrimary(chip);
    const TpmHandle session = startSession(chip, primary);
    encryptParameters(chip, session, TPMA_SESSION_DECRYPT | TPMA_SESSION_ENCRYPT);

    const Authorization secret(authorization);
    TPM2B_SENSITIVE_CREATE sensitive{};
    sensitive.sensitive.userAuth = secret.value;
    const TPM2B_PUBLIC wanted = signingKey();
    const TPM2B_DATA noData{};
    const TPML_PCR_SELECTION noRegisters{};
    TPM2B_PRIVATE* privatePart = nullptr;
    TPM2B_PUBLIC* publicPart = nullptr;
    const TSS2_RC result = Esys_Create(chip.get(), primary.get(), session.get(), ESYS_TR_NONE,
                                       ESYS_TR_NONE, &sensitive, &wanted, &noData, &noRegisters,
                                       &privatePart, &publicPart, nullptr, nullptr, nullptr);
    wipe(&sensitive, sizeof sensitive);
    require(result, "making the key");
    const TpmMemory<TPM2B_PRIVATE> privateMemory(privatePart);
    const TpmMemory<TPM2B_PUBLIC> publicMemory(publicPart);
    return {nameOf(chip, primary.get()), *publicPart, *privatePart};
}

Bytes signWith(const TpmConnection& chip, const TpmKey& key,
               const authenticator::SecretBytes& authorization, ByteView digest) {
    const TpmHandle primary = makePrimary(chip);
    // Before anything is sent to it: it may be another chip, or what somebody put before ours.
    if (!isSame(nameOf(chip, primary.get()), key.parentName))
        throw tpmFailure(TpmTrouble::otherChip, "the storage primary is another one");
    const TpmHandle session = startSession(chip, primary);
    const TpmHandle loaded = load(chip, primary, session, key);
    const Authorization secret(authorization);
    require(Esys_TR_SetAuth(chip.get(), loaded.get(), &secret.value), "authorizing");

    TPM2B_DIGEST message{};
    message.size = static_cast<UINT16>(std::min(digest.size(), sizeof message.buffer));
    std::copy_n(digest.begin(), message.size, message.buffer);
    const TPMT_SIG_SCHEME asTheKeyHasIt{.scheme = TPM2_ALG_NULL, .details = {}};
    const TPMT_TK_HASHCHECK notHashedByTheChip{
        .tag = TPM2_ST_HASHCHECK, .hierarchy = TPM2_RH_NULL, .digest = {}};
    TPMT_SIGNATURE* signature = nullptr;
    require(Esys_Sign(chip.get(), loaded.get(), session.get(), ESYS_TR_NONE, ESYS_TR_NONE, &message,
                      &asTheKeyHasIt, &notHashedByTheChip, &signature),
            "signing");
    const TpmMemory<TPMT_SIGNATURE> memory(signature);
    const TPMS_SIGNATURE_ECDSA& both = signature->signature.ecdsa;
    return authenticator::ecdsaSignature({both.signatureR.buffer, both.signatureR.size},
                                         {both.signatureS.buffer, both.signatureS.size});
}

} // namespace kelo::tpm
