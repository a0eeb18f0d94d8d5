#include "tests/common/Files.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"
#include "tests/update/SigningKey.h"
#include "update/UpdateSignature.h"

#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

class tst_UpdateSignature : public TestCase
{
    Q_OBJECT

private:
    QTemporaryDir m_folder;
    SigningKey m_key;

    [[nodiscard]] QString fileWith(const QByteArray& content) const
    {
        const QString path = m_folder.filePath(u"package"_s);
        return writeFile(path, content) ? path : QString();
    }

    [[nodiscard]] std::optional<UpdateFailure> faultOf(const QByteArray& content, const QByteArray& signedContent) const
    {
        return findSignatureFault(fileWith(content), *signatureFromBase64(m_key.sign(signedContent)),
                                  *publicKeyFromBase64(m_key.publicKey()));
    }

private Q_SLOTS:
    void initTestCase() { QVERIFY(m_folder.isValid()); }
    void theSignatureOfTheKeyIsAccepted()
    {
        QVERIFY(!faultOf("package", "package"));
        const QByteArray large(5'000'001, 'x');
        QVERIFY(!faultOf(large, large));
    }

    void anyOtherContentIsRefused()
    {
        QCOMPARE(faultOf("packagf", "package"), UpdateFailure::WrongSignature);
        QCOMPARE(faultOf("packag", "package"), UpdateFailure::WrongSignature);
        QCOMPARE(faultOf("package ", "package"), UpdateFailure::WrongSignature);
    }

    void aSignatureOfAnotherKeyIsRefused()
    {
        const SigningKey other;
        QCOMPARE(findSignatureFault(fileWith("package"), *signatureFromBase64(other.sign("package")),
                                    *publicKeyFromBase64(m_key.publicKey())),
                 UpdateFailure::WrongSignature);
    }

    void aKeyThatAcceptsAnySignatureIsRefused()
    {
        // The neutral element of the curve, as key and as signature.
        UpdatePublicKey key = {1};
        UpdateSignature signature = {1};
        QCOMPARE(findSignatureFault(fileWith("package"), signature, key), UpdateFailure::WrongSignature);
    }

    void aMissingOrEmptyFileCannotBeVerified()
    {
        const auto signature = *signatureFromBase64(m_key.sign(""));
        const auto key = *publicKeyFromBase64(m_key.publicKey());
        QCOMPARE(findSignatureFault(m_folder.filePath(u"absent"_s), signature, key), UpdateFailure::CannotReadBack);
        QCOMPARE(findSignatureFault(fileWith(""), signature, key), UpdateFailure::CannotReadBack);
    }

    void keysAndSignaturesAreBase64OfTheirExactLength()
    {
        QVERIFY(publicKeyFromBase64(QByteArray(32, 'k').toBase64()));
        QVERIFY(publicKeyFromBase64(" " + QByteArray(32, 'k').toBase64() + "\n"));
        QVERIFY(signatureFromBase64(QByteArray(64, 's').toBase64()));
        QVERIFY(!publicKeyFromBase64(""));
        QVERIFY(!publicKeyFromBase64(QByteArray(31, 'k').toBase64()));
        QVERIFY(!publicKeyFromBase64(QByteArray(33, 'k').toBase64()));
        QVERIFY(!publicKeyFromBase64(QByteArray(32, 'k').toHex()));
        QVERIFY(!publicKeyFromBase64("not base64!" + QByteArray(32, 'k').toBase64()));
        QVERIFY(!signatureFromBase64(""));
        QVERIFY(!signatureFromBase64(QByteArray(32, 's').toBase64()));
    }
};

template class RunnableTests<tst_UpdateSignature, void>;
#include "tst_updatesignature.moc"
