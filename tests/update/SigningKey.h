#pragma once

#include <QByteArray>

#include <array>

#include <sodium.h>

/// A new key pair.
class SigningKey
{
public:
    SigningKey()
    {
        if (sodium_init() < 0 || crypto_sign_keypair(m_publicKey.data(), m_secretKey.data()) != 0)
            qFatal("No keys could be made.");
    }

    /// In base64.
    [[nodiscard]] QByteArray publicKey() const { return base64(m_publicKey); }

    /// The signature of a content, in base64.
    [[nodiscard]] QByteArray sign(const QByteArray& content) const
    {
        std::array<unsigned char, crypto_sign_BYTES> signature = {};
        const QByteArray bytes = content;
        crypto_sign_detached(signature.data(), nullptr, reinterpret_cast<const unsigned char*>(bytes.constData()),
                             static_cast<unsigned long long>(bytes.size()), m_secretKey.data());
        return base64(signature);
    }

private:
    template <std::size_t size>
    static QByteArray base64(const std::array<unsigned char, size>& bytes)
    {
        return QByteArray(reinterpret_cast<const char*>(bytes.data()), static_cast<qsizetype>(size)).toBase64();
    }

    std::array<unsigned char, crypto_sign_PUBLICKEYBYTES> m_publicKey = {};
    std::array<unsigned char, crypto_sign_SECRETKEYBYTES> m_secretKey = {};
};
