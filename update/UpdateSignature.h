#pragma once

#include "update/UpdateFailure.h"

#include <QByteArray>
#include <QString>

#include <array>
#include <optional>

/// The Ed25519 public key of the maker.
using UpdatePublicKey = std::array<unsigned char, 32>;

/// An Ed25519 signature of a whole file.
using UpdateSignature = std::array<unsigned char, 64>;

/// The key, or the signature, that a text in base64 holds; absent when it holds none.
[[nodiscard]] std::optional<UpdatePublicKey> publicKeyFromBase64(const QByteArray& text);
[[nodiscard]] std::optional<UpdateSignature> signatureFromBase64(const QByteArray& text);

/// Checks the signature of a file that nobody changes meanwhile; absent when it is the key's. Reads the whole file,
/// about half a second for 256 MB. Usable on any thread.
[[nodiscard]] std::optional<UpdateFailure> findSignatureFault(const QString& path, const UpdateSignature& signature,
                                                              const UpdatePublicKey& key);
