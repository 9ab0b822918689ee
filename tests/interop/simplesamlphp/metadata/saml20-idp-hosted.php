<?php
// What the provider is told for one request comes in headers: the outcome here, what to sign below.
$setup = json_decode(file_get_contents(getenv('INTEROP_FOLDER') . '/setup.json'), true);
$metadata[$setup['idp']] = [
    'host' => '__DEFAULT__',
    'auth' => 'subscriber',
    'privatekey' => 'key.pem',
    'certificate' => 'cert.pem',
    'authproc' => [
        10 => ['class' => 'saml:AttributeNameID', 'attribute' => 'username', 'Format' => $setup['name_format']],
        20 => ['class' => 'core:PHP', 'code' => '
            $outcome = $_SERVER["HTTP_X_OUTCOME"];
            if ($outcome !== "Success") {
                $status = "urn:oasis:names:tc:SAML:2.0:status:";
                throw new \SimpleSAML\Module\saml\Error($status . "Responder", $status . $outcome);
            }'],
    ],
];
