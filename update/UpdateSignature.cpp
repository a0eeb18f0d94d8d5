#include "update/UpdateSignature.h"

#include <QFile>

#include <algorithm>

#include <sodium.h>

namespace {

static_assert(std::tuple_size_v<UpdatePublicKey> == crypto_sign_PUBLICKEYBYTES);
static_assert(std::tuple_size_v<UpdateSignature> == crypto_sign_BYTES);

template <typename Bytes>
std::optional<Bytes> fromBase64(const QByteArray& text)
{
    const QByteArray::FromBase64Result decoded =
        QByteArray::fromBase64Encoding(text.trimmed(), QByteArray::AbortOnBase64DecodingErrors);
    Bytes bytes = {};
    if (!decoded || decoded.decoded.size() != static_cast<qsizetype>(bytes.size()))
        return std::nullopt;
    std::ranges::copy(decoded.decoded, bytes.begin());
    return bytes;
}

} // namespace

std::optional<UpdatePublicKey> publicKeyFromBase64(const QByteArray& text)
{
    return fromBase64<UpdatePublicKey>(text);
}

std::optional<UpdateSignature> signatureFromBase64(const QByteArray& text)
{
    return fromBase64<UpdateSignature>(text);
}

std::optional<UpdateFailure> findSignatureFault(const QString& path, const UpdateSignature& signature,
                                                const UpdatePublicKey& key)
{
    // The file itself is signed, not a digest, so it is mapped as a whole.
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly) || file.size() == 0)
        return UpdateFailure::CannotReadBack;
    const uchar* content = file.map(0, file.size());
    if (content == nullptr || sodium_init() < 0)
        return UpdateFailure::CannotReadBack;
    const auto size = static_cast<unsigned long long>(file.size());
    if (crypto_sign_verify_detached(signature.data(), content, size, key.data()) != 0)
        return UpdateFailure::WrongSignature;
    return std::nullopt;
}
