#pragma once

#include "update/UpdateFailure.h"

#include <QString>

#include <array>
#include <optional>

/// The maker's Ed25519 public key.
using UpdatePublicKey = std::array<unsigned char, 32>;

/// An Ed25519 signature of a file.
using UpdateSignature = std::array<unsigned char, 64>;

/// A key or a signature from base64 text.
[[nodiscard]] std::optional<UpdatePublicKey> publicKeyFromBase64(const QByteArray& text);
[[nodiscard]] std::optional<UpdateSignature> signatureFromBase64(const QByteArray& text);

/// Verifies a file's signature; absent when it is valid. Takes about half a second for 256 MB. Any thread.
[[nodiscard]] std::optional<UpdateFailure> findSignatureFault(const QString& path, const UpdateSignature& signature,
                                                              const UpdatePublicKey& key);
