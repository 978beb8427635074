#include "TestSupport.h"

#include <platform/util/XmlValidator.h>

#include <gtest/gtest.h>

#include <QTemporaryDir>

namespace {

const QByteArray sSchema = R"(<?xml version="1.0"?>
<xs:schema xmlns:xs="http://www.w3.org/2001/XMLSchema">
    <xs:element name="Root">
        <xs:complexType>
            <xs:sequence><xs:element name="Item" type="xs:int" maxOccurs="2"/></xs:sequence>
            <xs:attribute name="version" type="xs:string" use="required"/>
        </xs:complexType>
    </xs:element>
</xs:schema>
)";

} // namespace

TEST(XmlValidator, ValidAndInvalidDocuments)
{
    QTemporaryDir dir;
    const QString schema = QString::fromStdString(testsupport::writeFile(dir, QStringLiteral("s.xsd"), sSchema));
    const util::XmlValidator validator(schema);

    const auto good = testsupport::writeFile(dir, QStringLiteral("good.xml"), "<Root version=\"1\"><Item>3</Item></Root>");
    QString error;
    EXPECT_TRUE(validator.validate(QString::fromStdString(good), &error)) << error.toStdString();

    const auto wrongType = testsupport::writeFile(dir, QStringLiteral("type.xml"), "<Root version=\"1\"><Item>x</Item></Root>");
    EXPECT_FALSE(validator.validate(QString::fromStdString(wrongType), &error));
    EXPECT_NE(error.indexOf(QStringLiteral("line 1")), -1) << error.toStdString();

    // libxml2's messages go into the error, the first few and each cut, and
    // nothing onto stderr.
    testing::internal::CaptureStderr();
    const auto tooMany = testsupport::writeFile(
        dir, QStringLiteral("many.xml"),
        "<Root version=\"1\"\na=\"1\" b=\"1\" c=\"1\" d=\"1\" e=\"1\" f=\"1\" g=\"1\">"
        "<Item>1</Item><Item>2</Item><Item>3</Item></Root>");
    EXPECT_FALSE(validator.validate(QString::fromStdString(tooMany), &error));
    EXPECT_TRUE(error.startsWith(QStringLiteral("line 2: "))) << error.toStdString();
    EXPECT_TRUE(error.endsWith(QStringLiteral("more)"))) << error.toStdString();
    EXPECT_LE(error.count(QLatin1Char('\n')), util::XmlValidator::sMaxReasons);
    EXPECT_FALSE(validator.validateContent("<Root version=\"1\"><Item>" + QByteArray(5000, '7') + "x</Item></Root>",
                                           QStringLiteral("long.xml"), &error));
    EXPECT_LT(error.size(), 300) << error.toStdString();
    EXPECT_FALSE(validator.validateContent("<Root", QStringLiteral("cut.xml"), &error));
    EXPECT_TRUE(error.startsWith(QStringLiteral("not well-formed XML: cut.xml\nline 1: "))) << error.toStdString();
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");

    // Nesting too deep is refused unparsed.
    EXPECT_FALSE(validator.validateContent(testsupport::nestedXml(100000, "Root"), QStringLiteral("deep.xml"), &error));
    EXPECT_EQ(error, QStringLiteral("deep.xml: XML nested deeper than 256 elements"));
    const auto noVersion = testsupport::writeFile(dir, QStringLiteral("nov.xml"), "<Root><Item>1</Item></Root>");
    EXPECT_FALSE(validator.validate(QString::fromStdString(noVersion)));
    const auto broken = testsupport::writeFile(dir, QStringLiteral("broken.xml"), "<Root version=\"1\"><Item>");
    EXPECT_FALSE(validator.validate(QString::fromStdString(broken), &error));
    EXPECT_TRUE(error.startsWith(QStringLiteral("not well-formed XML"))) << error.toStdString();
}

TEST(XmlValidator, MissingOrBrokenSchemaValidatesNothing)
{
    QTemporaryDir dir;
    const auto good = testsupport::writeFile(dir, QStringLiteral("good.xml"), "<Root version=\"1\"/>");
    QString error;
    testing::internal::CaptureStderr();
    EXPECT_FALSE(util::XmlValidator(dir.filePath(QStringLiteral("missing.xsd"))).validate(QString::fromStdString(good), &error));
    EXPECT_FALSE(error.isEmpty());
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    const QString broken = QString::fromStdString(testsupport::writeFile(dir, QStringLiteral("b.xsd"), "<xs:schema"));
    EXPECT_FALSE(util::XmlValidator(broken).validate(QString::fromStdString(good)));
}
